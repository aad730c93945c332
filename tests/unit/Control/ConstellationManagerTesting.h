// A constellation manager on a configuration of the test's own, with all that it publishes.
#pragma once

#include "Control/ConstellationManager.h"
#include "Framing/RecordFactory.h"
#include "Support/LogSentences.h"
#include "Support/TemporaryFolder.h"
#include "platform/Config.h"
#include "platform/Published.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

class CConstellationManagerTesting : public testing::Test {
protected:
    using Lines = std::vector<std::string>;

    CConstellationManagerTesting() {
        ::setenv("CORVANE_CONFIG", m_folder.Path("corvane.conf").c_str(), 1);
        m_config = CConfig::GetSystemConfig();
    }
    ~CConstellationManagerTesting() override {
        m_manager.reset();
        m_config->Release();
        ::unsetenv("CORVANE_CONFIG");
    }

    void WriteSettings(const std::string& text) const { m_folder.Write("corvane.conf", text); }
    /// The configuration's file; empty when there is none.
    std::string Settings() const {
        std::stringstream text;
        text << std::ifstream(m_folder.Path("corvane.conf"), std::ios::binary).rdbuf();
        return text.str();
    }

    /// Makes the manager, in place of one that was there, with the settings that there are.
    void Start() {
        m_manager.reset();
        m_manager = std::make_unique<CConstellationManager>();
    }
    void StartWith(const std::string& corvaneSettings) {
        WriteSettings("[Corvane]\n" + corvaneSettings);
        Start();
    }

    void Offer(const Bytes::Sentence& sentence) const {
        const std::unique_ptr<CGPSRecord> record(CreateRecord(sentence));
        ASSERT_NE(record, nullptr);
        m_manager->NewRecord(record.get());
    }
    /// What an action makes the manager publish, in order.
    template <class TAction>
    Lines PublishedBy(TAction action) {
        m_published.Forget();
        action();
        return m_published.All();
    }
    Lines PublishedAt(const Bytes::Sentence& sentence) {
        return PublishedBy([&] { Offer(sentence); });
    }

    /// The VERSION of a receiver whose card has this model.
    static Sentences::Version Model(const std::string& model) {
        return Sentences::Version().component(Component(1, model));
    }
    static Novatel::CNovatelVERSION::SComponent Component(std::uint32_t type,
                                                          const std::string& model) {
        Novatel::CNovatelVERSION::SComponent component;
        component.type = type;
        component.model = model;
        return component;
    }

    static std::string Warning(const std::string& text) {
        return R"(logger.event "name":"NovatelConstellationManager","level":"warning","text":")" +
               text + "\" ";
    }
    static std::string Essential(const std::string& key, const std::string& value) {
        return R"(logger.status "name":"NovatelConstellationManager","level":"essential","key":")" +
               key + "\" " + value;
    }
    /// The two lines of a decision.
    static Lines Decision(int desired, bool isOfRegion = false) {
        const std::string number = std::to_string(desired);
        return {Essential("desired_channel_configuration", number),
                Warning("CConstellationManager::UpdateChannelConfiguration(" +
                        std::string(isOfRegion ? "1" : "0") + ") " + number)};
    }
    static Lines Joined(const std::vector<Lines>& parts) {
        Lines all;
        for (const Lines& part : parts) {
            all.insert(all.end(), part.begin(), part.end());
        }
        return all;
    }

    CTemporaryFolder m_folder;
    CConfig* m_config;
    CPublished m_published;
    std::unique_ptr<CConstellationManager> m_manager;
};
