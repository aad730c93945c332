#include "hub/services/Categories.h"

#include "ServicesTesting.h"

#include <gmock/gmock.h>

namespace {

using HubTesting::json;
using testing::ElementsAre;
using testing::HasSubstr;

class Categories : public HubTesting::CServicesTesting {
protected:
    json Get(const std::string& category) {
        return Request("logger.getCategory", {{"category", category}});
    }
    json Set(const std::string& category, const json& isEnabled) {
        NextPass();
        return Request("logger.setCategory", {{"category", category}, {"enabled", isEnabled}});
    }
    static json Told(const std::string& category, int isEnabled) {
        return {{"category", category}, {"enabled", isEnabled}};
    }
    void FillUp() {
        std::string file = "[categories]\n";
        for (int i = 0; i < 1000; ++i) {
            file += "name" + std::to_string(i) + " = 0\n";
        }
        m_folder.Write("categories.conf", file);
        Restart();
    }
};

} // namespace

TEST_F(Categories, are_off_until_they_are_set) {
    EXPECT_EQ(Get("NovatelPortHandler")["result"], Told("NovatelPortHandler", 0));
}

TEST_F(Categories, hold_at_once_and_are_told_as_0_and_1) {
    EXPECT_EQ(Set("NovatelPortHandler", 1)["result"], Told("NovatelPortHandler", 1));
    EXPECT_EQ(Get("NovatelPortHandler")["result"], Told("NovatelPortHandler", 1));
    EXPECT_EQ(Get("NovatelPortHandler2")["result"], Told("NovatelPortHandler2", 0));
    EXPECT_EQ(Set("NovatelPortHandler", 0)["result"], Told("NovatelPortHandler", 0));
    EXPECT_EQ(Get("NovatelPortHandler")["result"], Told("NovatelPortHandler", 0));
}

TEST_F(Categories, are_kept_over_a_restart) {
    Set("on", 1);
    Set("off", 1);
    Set("off", 0);
    Restart();
    EXPECT_EQ(Get("on")["result"], Told("on", 1));
    EXPECT_EQ(Get("off")["result"], Told("off", 0));
}

TEST_F(Categories, are_told_to_the_observers_when_they_are_set_and_not_when_they_are_asked_for) {
    Get("a");
    Set("a", 1);
    Set("a", 0);
    EXPECT_THAT(m_observer.calls, ElementsAre("category|a|on", "category|a|off"));
}

TEST_F(Categories, can_be_set_by_a_notification) {
    EXPECT_EQ(Notify("logger.setCategory", {{"category", "a"}, {"enabled", true}}), json());
    EXPECT_EQ(Get("a")["result"], Told("a", 1));
}

TEST_F(Categories, are_written_as_a_truth_value_or_as_0_and_1) {
    for (const json& on : {json(true), json(1), json(1.0)}) {
        Set("a", 0);
        EXPECT_EQ(Set("a", on)["result"], Told("a", 1)) << on;
        EXPECT_EQ(Set("a", false)["result"], Told("a", 0));
    }
    for (const json& wrong : {json(2), json(-1), json(0.5), json("1"), json(), json::array()}) {
        EXPECT_EQ(Set("a", wrong)["error"]["code"], -32602) << wrong;
    }
    EXPECT_EQ(Request("logger.setCategory", {{"category", "a"}})["error"]["message"],
              "\"enabled\" is missing");
}

TEST_F(Categories, have_names_that_a_settings_file_can_carry) {
    for (const std::string& name :
         {std::string("a"), std::string("A9_-."), std::string(".."), std::string(256, 'x')}) {
        EXPECT_TRUE(Set(name, 1).contains("result")) << name;
        EXPECT_EQ(Get(name)["result"], Told(name, 1));
    }
    for (const json& name : {json(""), json("a b"), json("a=b"), json("[a]"), json("#a"), json("ä"),
                             json("a\nb"), json(std::string("a\0b", 3)),
                             json(std::string(257, 'x')), json(5), json(), json::array({"a"})}) {
        EXPECT_EQ(Set(name.is_string() ? name.get<std::string>() : "", 1)["error"]["code"], -32602);
        EXPECT_EQ(Request("logger.getCategory", {{"category", name}})["error"]["code"], -32602)
            << name;
    }
    EXPECT_EQ(Request("logger.getCategory", json::object())["error"]["message"],
              "\"category\" is missing");
}

TEST_F(Categories, are_a_thousand_at_most) {
    FillUp();
    EXPECT_THAT(Set("one_more", 1)["error"]["message"].get<std::string>(),
                HasSubstr("1000 categories already"));
    EXPECT_THAT(m_observer.calls, ElementsAre("refused"));
    EXPECT_EQ(Set("name999", 1)["result"], Told("name999", 1));
}

TEST_F(Categories, can_be_asked_for_also_when_there_is_no_room) {
    FillUp();
    EXPECT_EQ(Get("one_more")["result"], Told("one_more", 0));
}

TEST_F(Categories, that_were_ever_set_can_be_listed) {
    Set("b", 1);
    Set("a", 0);
    std::vector<std::string> listed;
    for (const Hub::SCategory& category : m_categories->All()) {
        listed.push_back(category.category + (category.isEnabled ? " on" : " off"));
    }
    EXPECT_THAT(listed, ElementsAre("a off", "b on"));
}

TEST_F(Categories, hold_until_the_end_where_they_cannot_be_kept) {
    Hub::CCategories categories("/proc/nowhere/categories.conf");
    categories.Set({"a", true});
    EXPECT_TRUE(categories.IsEnabled("a"));
}
