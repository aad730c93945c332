#include "Control/CategoryWishes.h"

#include "platform/LogClient.h"

CCategoryWishes::Wishes& CCategoryWishes::All() {
    static Wishes wishes;
    return wishes;
}

// The linker takes this one, so that the platform's, which is alone in its library member, is not
// looked for.
void CLogClient::SetCategory(const std::string& category, bool enabled) {
    CCategoryWishes::All().emplace_back(category, enabled);
}
