#include "platform/MPICallback.h"

#include <gtest/gtest.h>
#include <limits>

namespace {

using EType = MPICallbackBase::EType;
using Arguments = std::vector<MPICallbackBase::SArgument>;

class CCounter {
public:
    std::unique_ptr<BListC> Add(const BListC& arguments) {
        m_sum += arguments.GetInt(0);
        return std::make_unique<BListC>(BListC().AddInt(m_sum));
    }
    std::string WhyTooMuch(const BListC& arguments) const {
        return arguments.GetInt(0) <= 100 ? "" : "too much";
    }
    std::string WhyFull() const { return m_sum < 10 ? "" : "full"; }

private:
    std::int32_t m_sum = 0;
};

std::string WhyWrong(const Arguments& wanted, const BListC& given) {
    CCounter counter;
    return MPICallback<CCounter>("Add", wanted, MPICallbackBase::ECost::light, counter,
                                 &CCounter::Add)
        .WhyWrong(given);
}

const Arguments kSpeedAndName = {{"speed", EType::integer}, {"name", EType::text}};
const Arguments kOptional = {{"speed", EType::integer, true}, {"name", EType::text, true}};

} // namespace

TEST(MPICallback, has_a_name_and_a_cost) {
    CCounter counter;
    const MPICallback<CCounter> callback("Add", {}, MPICallbackBase::ECost::pause, counter,
                                         &CCounter::Add);
    EXPECT_EQ(callback.Name(), "Add");
    EXPECT_EQ(callback.Cost(), MPICallbackBase::ECost::pause);
}

TEST(MPICallback, calls_the_operation_of_its_object) {
    CCounter counter;
    MPICallback<CCounter> callback("Add", {}, MPICallbackBase::ECost::light, counter,
                                   &CCounter::Add);
    callback.Call(BListC().AddInt(3));
    const BAtomC sum = callback.Call(BListC().AddInt(4));
    ASSERT_NE(sum.AsList(), nullptr);
    EXPECT_EQ(sum.AsList()->GetInt(0), 7);
}

TEST(MPICallback, asks_its_object_why_it_cannot_be_called_now) {
    CCounter counter;
    MPICallback<CCounter> callback("Add", {}, MPICallbackBase::ECost::light, counter,
                                   &CCounter::Add, &CCounter::WhyFull);
    EXPECT_EQ(callback.WhyNotNow(), "");
    callback.Call(BListC().AddInt(10));
    EXPECT_EQ(callback.WhyNotNow(), "full");
}

TEST(MPICallback, can_be_called_at_any_time_without_such_a_question) {
    CCounter counter;
    const MPICallback<CCounter> callback("Add", {}, MPICallbackBase::ECost::light, counter,
                                         &CCounter::Add);
    EXPECT_EQ(callback.WhyNotNow(), "");
}

TEST(MPICallback, asks_its_object_about_arguments_of_the_right_types) {
    CCounter counter;
    const MPICallback<CCounter> callback("Add", {{"n", EType::integer}},
                                         MPICallbackBase::ECost::light, counter, &CCounter::Add,
                                         nullptr, &CCounter::WhyTooMuch);
    EXPECT_EQ(callback.WhyWrong(BListC().Add(100)), "");
    EXPECT_EQ(callback.WhyWrong(BListC().Add(101)), "too much");
    EXPECT_EQ(callback.WhyWrong(BListC().Add("x")),
              "argument 0 (n) must be a whole number within 32 bits");
}

TEST(MPICallback, takes_the_arguments_that_it_needs_and_any_more) {
    EXPECT_EQ(WhyWrong({}, BListC()), "");
    EXPECT_EQ(WhyWrong({}, BListC().Add("more")), "");
    EXPECT_EQ(WhyWrong(kSpeedAndName, BListC().Add(5).Add("x")), "");
    EXPECT_EQ(WhyWrong(kSpeedAndName, BListC().Add(5).Add("x").Add(BAtomC())), "");
}

TEST(MPICallback, names_the_first_argument_that_is_missing) {
    EXPECT_EQ(WhyWrong(kSpeedAndName, BListC()),
              "argument 0 (speed) is missing: a whole number within 32 bits");
    EXPECT_EQ(WhyWrong(kSpeedAndName, BListC().Add(5)), "argument 1 (name) is missing: a text");
    EXPECT_EQ(WhyWrong({{"x", EType::number}}, BListC()), "argument 0 (x) is missing: a number");
}

TEST(MPICallback, names_the_first_argument_that_is_of_the_wrong_type) {
    EXPECT_EQ(WhyWrong(kSpeedAndName, BListC().Add("fast").Add(5)),
              "argument 0 (speed) must be a whole number within 32 bits");
    EXPECT_EQ(WhyWrong(kSpeedAndName, BListC().Add(5).Add(6)), "argument 1 (name) must be a text");
    EXPECT_EQ(WhyWrong({{"x", EType::number}}, BListC().Add("1")),
              "argument 0 (x) must be a number");
}

TEST(MPICallback, takes_for_an_integer_what_is_whole_and_within_32_bits) {
    const Arguments integer = {{"n", EType::integer}};
    constexpr double kTwoTo31 = 2147483648.0;
    for (const BAtomC& good :
         {BAtomC(5), BAtomC(5.0), BAtomC(-0.0), BAtomC(kTwoTo31 - 1), BAtomC(-kTwoTo31)}) {
        EXPECT_EQ(WhyWrong(integer, BListC().Add(good)), "");
    }
    for (const BAtomC& bad :
         {BAtomC(5.5), BAtomC(kTwoTo31), BAtomC(-kTwoTo31 - 1), BAtomC("5"), BAtomC(),
          BAtomC(BListC().Add(5)), BAtomC(std::numeric_limits<double>::quiet_NaN())}) {
        EXPECT_NE(WhyWrong(integer, BListC().Add(bad)), "");
    }
}

TEST(MPICallback, takes_for_a_number_what_is_one) {
    const Arguments number = {{"x", EType::number}};
    for (const BAtomC& good : {BAtomC(5), BAtomC(-5.5), BAtomC(1e300)}) {
        EXPECT_EQ(WhyWrong(number, BListC().Add(good)), "");
    }
    for (const BAtomC& bad : {BAtomC(), BAtomC("5"), BAtomC(BListC()), BAtomC(BDictionaryC())}) {
        EXPECT_NE(WhyWrong(number, BListC().Add(bad)), "");
    }
}

TEST(MPICallback, takes_for_a_text_what_is_one) {
    const Arguments text = {{"t", EType::text}};
    EXPECT_EQ(WhyWrong(text, BListC().Add("")), "");
    for (const BAtomC& bad : {BAtomC(), BAtomC(5), BAtomC(5.5), BAtomC(BListC().Add("x"))}) {
        EXPECT_NE(WhyWrong(text, BListC().Add(bad)), "");
    }
}

TEST(MPICallback, looks_at_optional_arguments_when_just_as_many_are_given) {
    EXPECT_EQ(WhyWrong(kOptional, BListC()), "");
    EXPECT_EQ(WhyWrong(kOptional, BListC().Add("wrong")), "");
    EXPECT_EQ(WhyWrong(kOptional, BListC().Add("wrong").Add(5).Add(6)), "");
    EXPECT_EQ(WhyWrong(kOptional, BListC().Add(5).Add("x")), "");
    EXPECT_EQ(WhyWrong(kOptional, BListC().Add("wrong").Add("x")),
              "argument 0 (speed) must be a whole number within 32 bits");
    EXPECT_EQ(WhyWrong(kOptional, BListC().Add(5).Add(BAtomC())),
              "argument 1 (name) must be a text");
}
