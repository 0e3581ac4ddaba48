#include "toolkit/ravel/drive_script.h"

#include <gmock/gmock.h>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

namespace {

std::vector<drive_action> parse(const std::string& script) {
    std::vector<drive_action> actions;
    std::string error;
    EXPECT_TRUE(drive_parse(script, &actions, &error)) << error;
    return actions;
}

std::string refusal(const std::string& script) {
    std::vector<drive_action> actions(1);
    std::string error;
    EXPECT_FALSE(drive_parse(script, &actions, &error)) << script;
    EXPECT_EQ(actions.size(), 1u) << "left alone";
    return error;
}

TEST(DriveScript, ReadsEveryVerb) {
    const auto actions = parse("pick home_page/combo 双向\n"
                               "click a/b\n"
                               "press a 250\n"
                               "type a \"x y\"\n"
                               "append a z\n"
                               "key Ctrl+A\n"
                               "wheel a -120\n"
                               "wait a text done 900\n"
                               "wait a text done\n"
                               "expect a value 3\n"
                               "expect-file ../log/x.txt \"a\\nb\"\n"
                               "wait-file a b 7\n"
                               "shot one.png\n"
                               "dump one.txt\n"
                               "sleep 20\n"
                               "close\n");
    ASSERT_EQ(actions.size(), 16u);
    EXPECT_EQ(actions[0].verb, drive_verb::pick);
    EXPECT_EQ(drive_path_text(actions[0].widget), "home_page/combo");
    EXPECT_THAT(actions[0].args, ElementsAre("双向"));
    EXPECT_EQ(actions[1].verb, drive_verb::click);
    EXPECT_EQ(actions[2].number, 250);
    EXPECT_THAT(actions[3].args, ElementsAre("x y"));
    EXPECT_EQ(actions[4].verb, drive_verb::append);
    EXPECT_THAT(actions[5].args, ElementsAre("Ctrl+A"));
    EXPECT_EQ(actions[6].number, -120);
    EXPECT_THAT(actions[7].args, ElementsAre("text", "done"));
    EXPECT_EQ(actions[7].number, 900);
    EXPECT_EQ(actions[8].number, 5000);
    EXPECT_THAT(actions[9].args, ElementsAre("value", "3"));
    EXPECT_THAT(actions[10].args, ElementsAre("../log/x.txt", "a\nb"));
    EXPECT_EQ(actions[11].verb, drive_verb::wait_file);
    EXPECT_EQ(actions[11].number, 7);
    EXPECT_EQ(actions[12].verb, drive_verb::shot);
    EXPECT_EQ(actions[13].verb, drive_verb::dump);
    EXPECT_EQ(actions[14].number, 20);
    EXPECT_EQ(actions[15].verb, drive_verb::close);
}

TEST(DriveScript, CommentsBlankLinesAndLineEnds) {
    const auto actions = parse("\xEF\xBB\xBF# first\r\n\r\n   \t\n  click a # and so on\r\nclose");
    ASSERT_EQ(actions.size(), 2u);
    EXPECT_EQ(actions[0].line, 4u);
    EXPECT_EQ(actions[0].text, "click a # and so on");
    EXPECT_EQ(actions[1].line, 5u);
    EXPECT_THAT(parse(""), IsEmpty());
    EXPECT_THAT(parse("# only this"), IsEmpty());
}

TEST(DriveScript, QuotesAndEscapes) {
    EXPECT_THAT(parse(R"(type a "a\tb\n\"c\"\\ # d")")[0].args, ElementsAre("a\tb\n\"c\"\\ # d"));
    EXPECT_THAT(parse(R"(type a "")")[0].args, ElementsAre(""));
    EXPECT_THAT(parse(R"(type a b\nc)")[0].args, ElementsAre(R"(b\nc)")) << "escapes are for quoted words";
}

TEST(DriveScript, SaysLineAndReason) {
    EXPECT_EQ(refusal("click a\nclck a\n"), "line 2: unknown action \"clck\"");
    EXPECT_EQ(refusal("click"), "line 1: expected: click WIDGET");
    EXPECT_EQ(refusal("pick a"), "line 1: expected: pick WIDGET TEXT");
    EXPECT_THAT(refusal("close now"), HasSubstr("too much in the line"));
    EXPECT_THAT(refusal("wait a text done 9 9"), HasSubstr("wait WIDGET PROPERTY VALUE [MS]"));
    EXPECT_THAT(refusal("expect a colour red"), HasSubstr("no property is called \"colour\""));
    EXPECT_THAT(refusal("key Hyper+A"), HasSubstr("no key is called \"Hyper+A\""));
    EXPECT_THAT(refusal("sleep soon"), HasSubstr("number \"soon\""));
    EXPECT_THAT(refusal("sleep -1"), HasSubstr("number"));
    EXPECT_THAT(refusal("sleep 3600001"), HasSubstr("number"));
    EXPECT_THAT(refusal("sleep 99999999999999999999"), HasSubstr("number"));
    EXPECT_THAT(refusal("sleep 5ms"), HasSubstr("number"));
    EXPECT_THAT(refusal("type a \"b"), HasSubstr("closing quote is missing"));
    EXPECT_THAT(refusal("type a \"b\"c"), HasSubstr("a blank must follow"));
    EXPECT_THAT(refusal("type a b\"c\""), HasSubstr("a quote inside a word"));
    EXPECT_THAT(refusal("type a \"\\q\""), HasSubstr("unknown escape"));
    EXPECT_THAT(refusal("type a \"\\"), HasSubstr("unknown escape"));
    EXPECT_THAT(refusal(std::string("type a b\0c", 10)), HasSubstr("a zero byte"));
    for (const char* path : {"/a", "a/", "a//b", "a[", "a[]", "a[x]", "a[-1]", "a]", "a[1]b", "a[1][2]", "\"\""})
        EXPECT_THAT(refusal(std::string("click ") + path), HasSubstr("cannot read the widget")) << path;
}

struct verb_case {
    const char* shortest; ///< with nothing left out that must be there
    const char* usage;
    int32_t fallback = 0;
    const char* rest = ""; ///< what may follow
};
const verb_case verb_cases[] = {
    {"pick w t", "pick WIDGET TEXT"},
    {"click w", "click WIDGET"},
    {"press w 1", "press WIDGET MS", 1},
    {"type w t", "type WIDGET TEXT"},
    {"append w t", "append WIDGET TEXT"},
    {"key a", "key NAME"},
    {"wheel w 1", "wheel WIDGET DELTA", 1},
    {"hover w", "hover WIDGET"},
    {"hover-at w 1", "hover-at WIDGET OFFSET", 1},
    {"click-at w 1", "click-at WIDGET OFFSET", 1},
    {"wait w text t", "wait WIDGET PROPERTY VALUE [MS]", 5000, " 1"},
    {"expect w text t", "expect WIDGET PROPERTY VALUE"},
    {"expect-file p t", "expect-file PATH TEXT"},
    {"wait-file p t", "wait-file PATH TEXT [MS]", 5000, " 1"},
    {"shot p", "shot FILE"},
    {"dump p", "dump FILE"},
    {"clipboard p", "clipboard FILE"},
    {"drop a.json", "drop FILE"},
    {"sleep 1", "sleep MS", 1},
    {"close", "close"},
};

TEST(DriveScript, EveryVerbSaysWhatItExpects) {
    for (const verb_case& verb : verb_cases) {
        const std::string line = verb.shortest;
        const auto actions = parse(line);
        ASSERT_EQ(actions.size(), 1u) << line;
        EXPECT_EQ(actions[0].verb, static_cast<drive_verb>(&verb - verb_cases)) << line;
        EXPECT_EQ(actions[0].number, verb.fallback) << line;
        EXPECT_EQ(refusal(line + verb.rest + " x"),
                  std::string("line 1: too much in the line; expected: ") + verb.usage);
        if (line == verb.usage) continue;
        EXPECT_EQ(refusal(line.substr(0, line.rfind(' '))), std::string("line 1: expected: ") + verb.usage);
    }
}

TEST(DriveScript, NumbersGoToTheirLimits) {
    EXPECT_EQ(parse("sleep 3600000").at(0).number, 3600000);
    EXPECT_EQ(parse("wheel a 3600000").at(0).number, 3600000);
    EXPECT_EQ(parse("wheel a -3600000").at(0).number, -3600000);
    EXPECT_EQ(parse("sleep 0").at(0).number, 0);
    for (const char* line : {"sleep 3600001", "wheel a 3600001", "wheel a -3600001", "press a -1", "sleep +1"})
        EXPECT_THAT(refusal(line), HasSubstr("cannot read the number")) << line;
    drive_path path;
    ASSERT_TRUE(drive_parse_path("a[1000000]", &path));
    EXPECT_EQ(path[0].index, 1000000);
    EXPECT_FALSE(drive_parse_path("a[1000001]", &path));
}

TEST(DriveScript, Paths) {
    drive_path path;
    ASSERT_TRUE(drive_parse_path("table_client/row[3]/data", &path));
    ASSERT_EQ(path.size(), 3u);
    EXPECT_EQ(path[1].name, "row");
    EXPECT_EQ(path[1].index, 3);
    EXPECT_EQ(path[2].index, -1);
    EXPECT_EQ(drive_path_text(path), "table_client/row[3]/data");
    ASSERT_TRUE(drive_parse_path("a/[2]", &path));
    EXPECT_EQ(path[1].name, "");
    EXPECT_EQ(path[1].index, 2);
}

TEST(DriveScript, Keys) {
    drive_key key;
    ASSERT_TRUE(drive_parse_key("Ctrl+Shift+Tab", &key));
    EXPECT_TRUE(key.control && key.shift && !key.alt);
    EXPECT_EQ(key.name, "Tab");
    ASSERT_TRUE(drive_parse_key("Alt+c", &key));
    EXPECT_TRUE(key.alt && !key.control);
    EXPECT_EQ(key.name, "c");
    ASSERT_TRUE(drive_parse_key("+", &key));
    EXPECT_EQ(key.name, "+");
    ASSERT_TRUE(drive_parse_key("Ctrl++", &key));
    EXPECT_EQ(key.name, "+");
    for (const char* text : {"", "tab", "Ctrl+", "F13", "F0", "ab", "é", "Ctrl+Nope"})
        EXPECT_FALSE(drive_parse_key(text, &key)) << text;
    for (const std::string& name : drive_key_names()) EXPECT_TRUE(drive_parse_key(name, &key)) << name;
}

TEST(DriveScript, QuoteShowsWhatWouldBeTyped) {
    EXPECT_EQ(drive_quote("a\n\"b\"\\"), R"("a\n\"b\"\\")");
    EXPECT_EQ(drive_quote("双向", 4), "\"双\"...");
}

} // namespace
