// Every kind of message that programs send, as a table.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace HubTesting {

using nlohmann::json;

enum class EField { name, text, sentence, number, moment, integer, count, level, bytes, used, sky };

struct SField {
    const char* name;
    EField type;
    json value;
};

/// The method, the members besides name and time, and what an observer is told of them.
struct SKind {
    const char* method;
    std::vector<SField> fields;
    std::string call;

    /// With "name" and "time", which every message has.
    std::vector<SField> AllFields() const {
        std::vector<SField> all = {{"name", EField::name, "N"}, {"time", EField::moment, 1.5}};
        all.insert(all.end(), fields.begin(), fields.end());
        return all;
    }
    json Params() const {
        json params = json::object();
        for (const SField& field : AllFields()) {
            params[field.name] = field.value;
        }
        return params;
    }
};

/// In the order of the members, each has a value of its own.
inline std::vector<SKind> MessageKinds() {
    using enum EField;
    const json satellites = {{{"prn", 7}, {"word1", 1}, {"word2", 4294967295U}, {"cn0", 47.5}},
                             {{"prn", 255}, {"word1", 0}, {"word2", 0}, {"cn0", nullptr}}};
    return {
        {"logger.register",
         {{"process", name, "corvane"}, {"pid", integer, 411}, {"version", name, "0.1"}},
         "registration|N|1.5|1|corvane|411|0.1"},
        {"logger.status",
         {{"level", level, "essential"}, {"key", name, "k"}, {"value", text, "v, w"}},
         "status|N|1.5|1|essential|k|v, w"},
        {"logger.data",
         {{"key", name, "QRS_42"}, {"value", text, "1,2"}},
         "data|N|1.5|1|QRS_42|1,2"},
        {"logger.event",
         {{"level", level, "error"}, {"text", text, "lost"}},
         "event|N|1.5|1|error|lost"},
        {"logger.raw", {{"data", bytes, "Zm9v"}}, "raw|N|1.5|1|foo"},
        {"position.ecef",
         {{"x", number, 1.25},
          {"y", number, 2.25},
          {"z", number, 3.25},
          {"vx", number, 4.25},
          {"vy", number, 5.25},
          {"vz", number, 6.25},
          {"sx", number, 7.25},
          {"sy", number, 8.25},
          {"sz", number, 9.25},
          {"week", integer, 10},
          {"seconds", number, 11.25},
          {"hostTime", number, 12.25},
          {"positionQuality", integer, 3},
          {"fixQuality", integer, 4},
          {"differentialAge", number, 15.25},
          {"satellites", used, {16, 17, 18}},
          {"hdop", number, 19.25},
          {"vdop", number, 20.25},
          {"solutionClass", integer, 6},
          {"velocityLatency", number, 22.25}},
         "solution|N|1.5|1|1.25|2.25|3.25|4.25|5.25|6.25|7.25|8.25|9.25|10|11.25|12.25|3|4|15.25|"
         "16|17|18|19.25|20.25|6|22.25"},
        {"position.sky",
         {{"satellites", sky, satellites}},
         "sky|N|1.5|1|(7 1 4294967295 47.500000)(255 0 0 none)"},
        {"position.base",
         {{"x", number, 1.25}, {"y", number, 2.25}, {"z", number, 3.25}},
         "base|N|1.5|1|1.25|2.25|3.25"},
        {"reference.gps",
         {{"week", integer, 1},
          {"seconds", number, 2.25},
          {"x", number, 3.25},
          {"y", number, 4.25},
          {"z", number, 5.25},
          {"gps", integer, 6},
          {"glonass", integer, 7},
          {"other", integer, 8}},
         "reference|N|1.5|1|1|2.25|3.25|4.25|5.25|6|7|8"},
        {"nmea.sentence",
         {{"id", name, "GPGSV"},
          {"gpsTime", count, 604799000},
          {"sentence", sentence, "$GPGSV,1*00"}},
         "sentence|N|1.5|1|GPGSV|604799000|$GPGSV,1*00"},
        {"nmea.geoid", {{"separation", number, 43.75}}, "geoid|N|1.5|1|43.75"},
        {"diagnostics.raise",
         {{"code", integer, 79141}, {"sub", integer, 2}, {"value", number, 0.5}},
         "raise|N|1.5|1|79141|2|0.5"},
        {"diagnostics.clear",
         {{"code", integer, 79141}, {"sub", integer, 2}},
         "clear|N|1.5|1|79141|2|0"},
        {"diagnostics.activity",
         {{"received", count, 40}, {"sentences", count, 5000000000}},
         "activity|N|1.5|1|40|5000000000"},
    };
}

} // namespace HubTesting
