// Procedures that answer a single value instead of a list.

#include "MPIServerTesting.h"
#include "RPCMessage.h"

namespace {

class CSpeeds {
public:
    BAtomC Get(const BListC& arguments) { return arguments.GetInt(0) == 50 ? 9600 : 0; }
    BAtomC Name(const BListC&) { return "gps"; }
    std::unique_ptr<BListC> List(const BListC&) {
        return std::make_unique<BListC>(BListC().AddInt(9600));
    }
    std::unique_ptr<BListC> Nothing(const BListC&) { return nullptr; }
};

using ECost = MPICallbackBase::ECost;

class SingleValue : public CMPIServerTesting {
protected:
    template <class TResult>
    void OfferOperation(const std::string& name, TResult (CSpeeds::*operation)(const BListC&)) {
        m_server.Register(std::make_unique<MPICallback<CSpeeds, TResult>>(
            name, std::vector<MPICallbackBase::SArgument>{}, ECost::light, m_speeds, operation));
    }

    CSpeeds m_speeds;
};

} // namespace

TEST_F(SingleValue, is_written_as_it_is_and_a_list_as_an_array) {
    OfferOperation("Get", &CSpeeds::Get);
    OfferOperation("Name", &CSpeeds::Name);
    OfferOperation("List", &CSpeeds::List);
    OfferOperation("Nothing", &CSpeeds::Nothing);
    Listen();
    const auto client = Connect();
    EXPECT_EQ(AnswersTo(*client,
                        R"({"jsonrpc":"2.0","id":1,"method":"Get","params":[50]})"
                        "\n" +
                            Request("2", "Name") + "\n" + Request("3", "List") + "\n" +
                            Request("4", "Nothing") + "\n",
                        4),
              (Lines{Result("1", "9600"), Result("2", R"("gps")"), Result("3", "[9600]"),
                     Result("4", "null")}));
}

TEST_F(SingleValue, is_given_to_other_callers_as_it_is) {
    MPICallback<CSpeeds, BAtomC> callback("Get", {}, ECost::light, m_speeds, &CSpeeds::Get);
    EXPECT_EQ(callback.Call(BListC().AddInt(50)).AsInteger(), 9600);
}

TEST_F(SingleValue, of_any_kind_is_a_result) {
    EXPECT_EQ(RPCMessage::Answer(1, BAtomC("a")), R"({"jsonrpc":"2.0","id":1,"result":"a"})");
    EXPECT_EQ(RPCMessage::Answer(1, BAtomC(0.5)), R"({"jsonrpc":"2.0","id":1,"result":0.5})");
    EXPECT_EQ(RPCMessage::Answer(1, BAtomC()), R"({"jsonrpc":"2.0","id":1,"result":null})");
    EXPECT_EQ(RPCMessage::Answer(1, BAtomC(BListC().Add(1))),
              R"({"jsonrpc":"2.0","id":1,"result":[1]})");
}
