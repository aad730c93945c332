#include "platform/MPICallback.h"

namespace {

bool IsOfType(const BAtomC& value, MPICallbackBase::EType type) {
    switch (type) {
    case MPICallbackBase::EType::integer:
        return value.AsInteger().has_value();
    case MPICallbackBase::EType::number:
        return value.AsDouble().has_value();
    case MPICallbackBase::EType::text:
        return value.AsText() != nullptr;
    }
    return false;
}

const char* Describe(MPICallbackBase::EType type) {
    switch (type) {
    case MPICallbackBase::EType::integer:
        return "a whole number within 32 bits";
    case MPICallbackBase::EType::number:
        return "a number";
    case MPICallbackBase::EType::text:
        return "a text";
    }
    return "";
}

} // namespace

std::string MPICallbackBase::WhyWrong(const BListC& arguments) const {
    for (std::size_t i = 0; i < m_arguments.size(); ++i) {
        const SArgument& wanted = m_arguments[i];
        const bool isThere = i < arguments.Size();
        if ((isThere && IsOfType(arguments.At(i), wanted.type)) ||
            (wanted.isOptional && arguments.Size() != m_arguments.size())) {
            continue;
        }
        return "argument " + std::to_string(i) + " (" + wanted.name +
               (isThere ? ") must be " : ") is missing: ") + Describe(wanted.type);
    }
    return {};
}

BAtomC MPICallbackBase::ResultOf(std::unique_ptr<BListC> reply) {
    return reply == nullptr ? BAtomC() : BAtomC(std::move(*reply));
}
