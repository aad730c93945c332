#include "platform/LogClient.h"

#include "HubLink.h"

void CLogClient::SetCategory(const std::string& category, bool enabled) {
    CHubLink::Get().WishCategory(category, enabled);
}
