// A procedure that a server of remote procedure calls offers: its name, arguments and operation.
#pragma once

#include "platform/BAtom.h"

#include <memory>
#include <optional>
#include <string>
#include <vector>

/// Registered with an MPISocketServerC, which checks the arguments before it calls.
class MPICallbackBase {
public:
    enum class EType { integer, number, text };
    /// What a call takes besides its time: of each kind the server makes one a pass.
    enum class ECost { light, settingsWrite, pause };

    struct SArgument {
        const char* name;
        EType type;
        /// Looked at only in calls with just as many arguments as there are; any other call is the
        /// operation's to judge.
        bool isOptional = false;
    };

    MPICallbackBase(std::string name, std::vector<SArgument> arguments, ECost cost)
        : m_name(std::move(name)), m_arguments(std::move(arguments)), m_cost(cost) {}
    virtual ~MPICallbackBase() = default;

    const std::string& Name() const { return m_name; }
    ECost Cost() const { return m_cost; }

    /// Whether its arguments have names, not places. The list of arguments below is then a single
    /// dictionary.
    virtual bool TakesNamedArguments() const { return false; }

    /// What is wrong with the arguments of a call; empty when they are those that it needs. More
    /// arguments than it needs are no fault.
    virtual std::string WhyWrong(const BListC& arguments) const;

    /// Why it cannot be called now; empty when it can.
    virtual std::string WhyNotNow() const { return {}; }

    /// Makes the call and gives what is written as its result: nothing for a procedure that returns
    /// nothing.
    virtual BAtomC Call(const BListC& arguments) = 0;

protected:
    static BAtomC ResultOf(BAtomC value) { return value; }
    static BAtomC ResultOf(std::unique_ptr<BListC> reply);

private:
    std::string m_name;
    std::vector<SArgument> m_arguments;
    ECost m_cost;
};

/// A procedure that is an operation of an object, which outlives it. The operation returns a list,
/// which may be missing, or a single value.
template <class T, class TResult = std::unique_ptr<BListC>>
class MPICallback : public MPICallbackBase {
public:
    using Operation = TResult (T::*)(const BListC&);
    using Check = std::string (T::*)() const;
    using ArgumentCheck = std::string (T::*)(const BListC&) const;

    /// Both checks may be null; `whyWrong` is asked when the arguments are of the right types.
    MPICallback(std::string name, std::vector<SArgument> arguments, ECost cost, T& object,
                Operation operation, Check whyNotNow = nullptr, ArgumentCheck whyWrong = nullptr)
        : MPICallbackBase(std::move(name), std::move(arguments), cost),
          m_object(object),
          m_operation(operation),
          m_whyNotNow(whyNotNow),
          m_whyWrong(whyWrong) {}

    std::string WhyWrong(const BListC& arguments) const override {
        const std::string why = MPICallbackBase::WhyWrong(arguments);
        return !why.empty() || m_whyWrong == nullptr ? why : (m_object.*m_whyWrong)(arguments);
    }

    std::string WhyNotNow() const override {
        return m_whyNotNow == nullptr ? std::string() : (m_object.*m_whyNotNow)();
    }

    BAtomC Call(const BListC& arguments) override {
        return ResultOf((m_object.*m_operation)(arguments));
    }

private:
    T& m_object;
    Operation m_operation;
    Check m_whyNotNow;
    ArgumentCheck m_whyWrong;
};
