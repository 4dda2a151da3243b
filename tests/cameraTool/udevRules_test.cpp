// The rule for udev opens the very cameras that the program knows.
#include "cameraTool/usbCameras.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::UnorderedElementsAreArray;

// The keys of a rule with operator and value, such as {"MODE=", "0660"}.
using Rule = std::map<std::string, std::string>;

// Fails for what is no rule.
Rule ruleOf(const std::string& line) {
    Rule rule;
    std::size_t place = 0;
    while (place < line.size()) {
        const std::size_t opening = line.find('"', place);
        const std::size_t closing =
            opening == std::string::npos ? opening : line.find('"', opening + 1);
        if (closing == std::string::npos || line[opening - 1] != '=') {
            ADD_FAILURE() << "not understood: " << line.substr(place);
            return rule;
        }
        rule[line.substr(place, opening - place)] = line.substr(opening + 1, closing - opening - 1);
        place = closing + 1;
        if (place < line.size()) {
            EXPECT_EQ(line.substr(place, 2), ", ") << line;
            place += 2;
        }
    }
    return rule;
}

std::vector<Rule> rules() {
    std::ifstream file(RULES);
    std::vector<Rule> all;
    for (std::string line; std::getline(file, line);) {
        if (!line.empty() && line.front() != '#') {
            all.push_back(ruleOf(line));
        }
    }
    return all;
}

std::set<std::string> splitAtBars(const std::string& text) {
    std::set<std::string> parts;
    std::size_t begin = 0;
    while (begin <= text.size()) {
        const std::size_t end = std::min(text.find('|', begin), text.size());
        parts.insert(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return parts;
}

TEST(UdevRules, GiveCamerasOfTheVendorToTheUserAndTheGroup) {
    int given = 0;
    for (const Rule& rule : rules()) {
        const auto mode = rule.find("MODE=");
        if (mode == rule.end()) {
            continue;
        }
        ++given;
        const bool device = rule.at("SUBSYSTEM==") == "usb";
        EXPECT_TRUE(device || rule.at("SUBSYSTEM==") == "video4linux");
        EXPECT_EQ(mode->second, "0660");
        EXPECT_EQ(rule.at("GROUP="), "plugdev");
        EXPECT_EQ(rule.at("TAG+="), "uaccess");
        EXPECT_EQ(rule.at(device ? "ATTR{idVendor}==" : "ATTRS{idVendor}=="),
                  cameraTool::realsenseVendor);
    }
    EXPECT_EQ(given, 4);
}

TEST(UdevRules, NameTheProductsThatAreKnown) {
    const auto known = cameraTool::realsenseProducts();
    std::map<std::string, std::set<std::string>> names;
    std::map<std::string, std::set<std::string>> numbers;
    for (const Rule& rule : rules()) {
        for (const auto& [key, value] : rule) {
            if (key.find("{product}") != std::string::npos) {
                names[rule.at("SUBSYSTEM==")].insert(value);
            }
            if (key.find("{idProduct}") != std::string::npos) {
                numbers[rule.at("SUBSYSTEM==")] = splitAtBars(value);
            }
        }
    }
    for (const char* subsystem : {"usb", "video4linux"}) {
        EXPECT_THAT(names[subsystem], UnorderedElementsAreArray({"*RealSense*"}));
        EXPECT_THAT(numbers[subsystem], UnorderedElementsAreArray(known.begin(), known.end()));
    }
}

TEST(UdevRules, LeaveThemBehindWhenACameraGoes) {
    const std::vector<Rule> all = rules();
    ASSERT_FALSE(all.empty());
    EXPECT_EQ(all.front(), (Rule{{"ACTION==", "remove"}, {"GOTO=", "qvr_camera_end"}}));
    EXPECT_EQ(all.back(), (Rule{{"LABEL=", "qvr_camera_end"}}));
}

TEST(UdevRules, AreReadBeforeTagsAreHandedOut) {
    const std::string name = std::filesystem::path(RULES).filename();
    EXPECT_LT(std::stoi(name), 73);
    EXPECT_TRUE(name.ends_with(".rules"));
}

} // namespace
