#include "hub/services/ServicesServer.h"

#include "hub/services/MessageReader.h"

#include <memory>
#include <optional>
#include <utility>

namespace Hub {

namespace {

/// A message of type T, which `Reader` makes of its arguments.
template <class T>
class CMessageCallback : public MPICallbackBase {
public:
    using TReader = void (*)(CFields&, T&);

    CMessageCallback(const char* name, CServicesServer& server, TReader reader)
        : MPICallbackBase(name, {}, ECost::light), m_server(server), m_reader(reader) {}

    bool TakesNamedArguments() const override { return true; }

    /// Keeps what it has read for the call, which follows at once.
    std::string WhyWrong(const BListC& arguments) const override {
        CFields fields(*arguments.At(0).AsDictionary());
        m_read = T();
        m_reader(fields, m_read);
        return fields.WhyWrong();
    }
    BAtomC Call(const BListC&) override {
        m_server.HandOn(std::exchange(m_read, T()));
        return {};
    }

private:
    CServicesServer& m_server;
    TReader m_reader;
    mutable T m_read;
};

/// logger.getCategory or logger.setCategory.
class CCategoryCallback : public MPICallbackBase {
public:
    CCategoryCallback(const char* name, CServicesServer& server, bool isSetting)
        : MPICallbackBase(name, {}, isSetting ? ECost::settingsWrite : ECost::light),
          m_server(server),
          m_isSetting(isSetting) {}

    bool TakesNamedArguments() const override { return true; }

    std::string WhyWrong(const BListC& arguments) const override {
        CFields fields(*arguments.At(0).AsDictionary());
        const std::string category = Read(fields).category;
        std::string why = fields.WhyWrong();
        if (why.empty()) {
            why = CCategories::WhyWrong(category);
        }
        return why.empty() && m_isSetting ? m_server.Categories().WhyNoRoom(category) : why;
    }
    BAtomC Call(const BListC& arguments) override {
        CFields fields(*arguments.At(0).AsDictionary());
        SCategory category = Read(fields);
        CCategories& categories = m_server.Categories();
        if (m_isSetting) {
            categories.Set(category);
            m_server.HandOn(category);
        }
        category.isEnabled = categories.IsEnabled(category.category);
        return BDictionaryC()
            .Set("category", category.category)
            .Set("enabled", category.isEnabled ? 1 : 0);
    }

private:
    SCategory Read(CFields& fields) const {
        SCategory category;
        category.category = fields.Name("category");
        category.isEnabled = m_isSetting && fields.Truth("enabled");
        return category;
    }

    CServicesServer& m_server;
    bool m_isSetting;
};

template <class T>
void Offer(CServicesServer& server, const char* name, void (*reader)(CFields&, T&)) {
    server.Register(std::make_unique<CMessageCallback<T>>(name, server, reader));
}

} // namespace

CServicesServer::CServicesServer(SocketCollectionC& sockets, CCategories& categories,
                                 std::vector<CHubObserver*> observers)
    : MPISocketServerC(sockets), m_categories(categories), m_observers(std::move(observers)) {
    Offer<SRegistration>(*this, "logger.register", Read);
    Offer<SStatus>(*this, "logger.status", Read);
    Offer<SDataLine>(*this, "logger.data", Read);
    Offer<SEvent>(*this, "logger.event", Read);
    Offer<SRawBlock>(*this, "logger.raw", Read);
    Offer<SSolution>(*this, "position.ecef", Read);
    Offer<SSky>(*this, "position.sky", Read);
    Offer<SBase>(*this, "position.base", Read);
    Offer<SReference>(*this, "reference.gps", Read);
    Offer<SSentence>(*this, "nmea.sentence", Read);
    Offer<SGeoid>(*this, "nmea.geoid", Read);
    Offer<SDiagnostic>(*this, "diagnostics.raise", ReadRaised);
    Offer<SDiagnostic>(*this, "diagnostics.clear", ReadCleared);
    Offer<SActivity>(*this, "diagnostics.activity", Read);
    Register(std::make_unique<CCategoryCallback>("logger.getCategory", *this, false));
    Register(std::make_unique<CCategoryCallback>("logger.setCategory", *this, true));
}

TProcess CServicesServer::Sender() {
    const auto [entry, isNew] = m_senders.try_emplace(Caller(), m_lastSender + 1);
    if (isNew) {
        ++m_lastSender;
    }
    return entry->second;
}

void CServicesServer::PassOver(const SSolution& solution) {
    for (CHubObserver* const observer : m_observers) {
        observer->SolutionPassedOver(solution);
    }
}

void CServicesServer::ConnectionClosed(MPISocketConnectionC& connection) {
    const auto found = m_senders.find(&connection);
    if (found == m_senders.end()) {
        return;
    }
    for (CHubObserver* const observer : m_observers) {
        observer->ProcessGone(found->second);
    }
    m_senders.erase(found);
}

void CServicesServer::RequestRefused() {
    for (CHubObserver* const observer : m_observers) {
        observer->MessageRefused();
    }
}

} // namespace Hub
