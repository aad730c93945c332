// A receiver status observer with all that it publishes, for its tests.
#pragma once

#include "Framing/RecordFactory.h"
#include "LogObserver/ReceiverStatusObserver.h"
#include "Support/LogSentences.h"
#include "platform/Published.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

class CReceiverStatusTesting : public testing::Test {
protected:
    using Lines = std::vector<std::string>;

    void Offer(const Bytes::Sentence& sentence) {
        const std::unique_ptr<CGPSRecord> record(CreateRecord(sentence));
        ASSERT_NE(record, nullptr);
        m_observer.NewRecord(record.get());
    }
    /// What one sentence makes the observer publish, in order.
    Lines PublishedAt(const Bytes::Sentence& sentence) {
        m_published.Forget();
        Offer(sentence);
        return m_published.All();
    }
    /// Takes the usual header, so that from now on only what is new in a header is published.
    void Settle() { Offer(Sentences::BinaryLog(999)); }

    static std::string Essential(const std::string& key, const std::string& value) {
        return Status("essential", key, value);
    }
    static std::string Info(const std::string& key, const std::string& value) {
        return Status("info", key, value);
    }
    static std::string Warning(const std::string& text) {
        return R"(logger.event "name":"NovatelReceiverStatus","level":"warning","text":")" + text +
               "\" ";
    }
    static std::string Raised(const std::string& code, const std::string& sub) {
        return "diagnostics.raise " + Diagnostic(code, sub) + ",\"value\":1 ";
    }
    static std::string Cleared(const std::string& code, const std::string& sub) {
        return "diagnostics.clear " + Diagnostic(code, sub) + " ";
    }
    /// `satellites` as the JSON array's elements.
    static std::string Sky(const std::string& satellites) {
        return R"(position.sky "name":"CPositionAPI","satellites":[)" + satellites + "] ";
    }

    CPublished m_published;
    CReceiverStatusObserver m_observer;

private:
    static std::string Status(const std::string& level, const std::string& key,
                              const std::string& value) {
        return R"(logger.status "name":"NovatelReceiverStatus","level":")" + level +
               R"(","key":")" + key + "\" " + value;
    }
    static std::string Diagnostic(const std::string& code, const std::string& sub) {
        return R"("name":"CReceiverStatusObserver","code":)" + code + ",\"sub\":" + sub;
    }
};
