#include "LogSchedule.h"

#include <algorithm>

namespace Sim {

namespace {

/// Whether it is sent with the clock.
bool IsTimed(const SLogRequest& request) {
    const bool isOfEvent = request.what.log->kind == ELogKind::asynchronous;
    return request.trigger == ETrigger::onTime ||
           ((request.trigger == ETrigger::onNew || request.trigger == ETrigger::onNext) &&
            !isOfEvent);
}

Milliseconds DueAfter(const SLogRequest& request, Milliseconds moment) {
    if (!IsTimed(request)) {
        return kNever;
    }
    const bool isPeriodic = request.trigger == ETrigger::onTime;
    const Milliseconds period = isPeriodic ? request.period : request.what.log->renewal;
    const Milliseconds offset = isPeriodic ? request.offset % period : 0;
    return LastMultiple(moment - offset, period) + period + offset;
}

} // namespace

bool SScheduledLog::IsWatched() const {
    return request.what.log->kind == ELogKind::asynchronous &&
           (request.trigger == ETrigger::onChanged || request.trigger == ETrigger::onNew ||
            request.trigger == ETrigger::onNext);
}

SResponse CLogSchedule::Add(const SLogRequest& request, Milliseconds now) {
    if (request.trigger == ETrigger::once) {
        Remove(request);
        return {};
    }
    const SScheduledLog added{.request = request, .due = DueAfter(request, now), .content = {}};
    const auto same = std::find_if(m_logs.begin(), m_logs.end(), [&](const SScheduledLog& each) {
        return each.request.IsSameLog(request);
    });
    if (same != m_logs.end()) {
        *same = added;
    } else if (m_logs.size() < kMost) {
        m_logs.push_back(added);
    } else {
        return {EResponse::noResources};
    }
    return {};
}

void CLogSchedule::Remove(const SLogRequest& request) {
    std::erase_if(m_logs,
                  [&](const SScheduledLog& each) { return each.request.IsSameLog(request); });
}

void CLogSchedule::RemoveAll(EPort port, bool withHeldOnes) {
    std::erase_if(m_logs, [&](const SScheduledLog& each) {
        return each.request.port == port && (withHeldOnes || !each.request.isHeld);
    });
}

Milliseconds CLogSchedule::NextDue() const {
    Milliseconds next = kNever;
    for (const SScheduledLog& each : m_logs) {
        next = std::min(next, each.due);
    }
    return next;
}

std::vector<SLogRequest> CLogSchedule::TakeDue(Milliseconds moment) {
    std::vector<SLogRequest> due;
    for (SScheduledLog& each : m_logs) {
        if (each.due <= moment) {
            due.push_back(each.request);
            each.due = DueAfter(each.request, moment);
        }
    }
    std::erase_if(m_logs, [&](const SScheduledLog& each) {
        return each.request.trigger == ETrigger::onNext && each.due != kNever &&
               std::any_of(due.begin(), due.end(),
                           [&](const SLogRequest& sent) { return sent.IsSameLog(each.request); });
    });
    return due;
}

void CLogSchedule::SkipTo(Milliseconds now) {
    for (SScheduledLog& each : m_logs) {
        each.due = each.due < now ? DueAfter(each.request, now - 1) : each.due;
    }
}

} // namespace Sim
