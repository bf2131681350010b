// SPDX-License-Identifier: MIT
// JSON with places: judged against another parser, and against the bytes that a change must leave alone.
#include "gltf/JsonPlaces.h"
#include "gltf/JsonSplice.h"

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>
#include <rapidcheck/gtest.h>

#include <cmath>

namespace skindesk::gltf {
namespace {

std::string RefusalOf(const std::string& text)
{
    try {
        const JsonPlaces places(text);
        return "";
    } catch (const JsonError& error) {
        return error.what();
    }
}

const std::string SAMPLE = R"({
  "asset" : {"version":"2.0", "n":1.50e+00},
  "list": [1, {"a": null, "b/c~d": [true , false]}, "x\u00e9\ud83d\ude00"],
  "empty": [], "none": {}
})";

TEST(JsonPlaces, KnowsThePlaceOfEveryValue)
{
    const JsonPlaces places(SAMPLE);
    EXPECT_EQ(places.Raw(places.At("/asset/n")), "1.50e+00");
    EXPECT_EQ(places.Raw(places.At("/asset/version")), "\"2.0\"");
    EXPECT_EQ(places.Raw(places.At("/list/1")), R"({"a": null, "b/c~d": [true , false]})");
    EXPECT_EQ(places.Raw(places.At("/list/1/b~1c~0d/1")), "false");
    EXPECT_EQ(places.Raw(places.At("/empty")), "[]");
    EXPECT_EQ(places.Raw(places.Root()), SAMPLE);
    EXPECT_EQ(places.At("/list/7"), JSON_NONE);
    EXPECT_EQ(places.At("/asset/x"), JSON_NONE);
}

TEST(JsonPlaces, PointersLeadBackToTheirValues)
{
    const JsonPlaces places(SAMPLE);
    for (JsonValue v = 0; v < places.ValueCount(); ++v) {
        EXPECT_EQ(places.At(places.Pointer(v)), v);
    }
}

TEST(JsonPlaces, UnescapesStringsAndKeys)
{
    const JsonPlaces places(SAMPLE);
    EXPECT_EQ(places.String(places.At("/list/2")), "x\xC3\xA9\xF0\x9F\x98\x80");
    const std::string escaped = R"({"a\u0062\n\t\\\/\"": 1})";
    const JsonPlaces other(escaped);
    EXPECT_EQ(other.Key(1), "ab\n\t\\/\"");
    EXPECT_NE(other.Member(0, "ab\n\t\\/\""), JSON_NONE);
}

TEST(JsonPlaces, NumbersBeyondADoubleAreInfiniteOrZero)
{
    const std::string text =
        "[1e999, -1e999, 1e-999, 0.1, -0, 123456789012345678901234567890, 0.00001e-400, 100000e400]";
    const JsonPlaces places(text);
    const auto at = [&places](const char* pointer) { return places.Number(places.At(pointer)); };
    EXPECT_EQ(at("/0"), INFINITY);
    EXPECT_EQ(at("/1"), -INFINITY);
    EXPECT_EQ(at("/2"), 0);
    EXPECT_EQ(at("/3"), 0.1);
    EXPECT_EQ(at("/4"), 0);
    EXPECT_EQ(at("/5"), 123456789012345678901234567890.0);
    EXPECT_EQ(at("/6"), 0);
    EXPECT_EQ(at("/7"), INFINITY);
}

TEST(JsonPlaces, AMillionOpenBracketsAreOnlyASentence)
{
    EXPECT_EQ(RefusalOf(std::string(1'000'000, '[')), "the JSON ends too early");
    EXPECT_EQ(RefusalOf(std::string(1'000'000, '[') + std::string(1'000'000, ']')), "");
}

TEST(JsonPlaces, KeysThatStandTwiceAreRefused)
{
    EXPECT_THAT(RefusalOf(R"({"a":1,"b":2,"a":3})"), testing::HasSubstr("\"a\" stands twice"));
    EXPECT_THAT(RefusalOf(R"({"a":1,"\u0061":3})"), testing::HasSubstr("\"a\" stands twice"));
    EXPECT_EQ(RefusalOf(R"({"a":{"a":1},"b":{"a":1}})"), "");
}

TEST(JsonPlaces, SaysWhatIsWrongWithEachKindOfText)
{
    using testing::HasSubstr;
    EXPECT_THAT(RefusalOf(""), HasSubstr("there is no JSON"));
    EXPECT_THAT(RefusalOf("{} x"), HasSubstr("behind the end"));
    EXPECT_THAT(RefusalOf("{\"a\":NaN}"), HasSubstr("begins no JSON value"));
    EXPECT_THAT(RefusalOf("[1,]"), HasSubstr("begins no JSON value"));
    EXPECT_THAT(RefusalOf("[1 2]"), HasSubstr("a comma or ] is missing"));
    EXPECT_THAT(RefusalOf("{a:1}"), HasSubstr("a key in quotes"));
    EXPECT_THAT(RefusalOf("{\"a\" 1}"), HasSubstr("a colon is missing"));
    EXPECT_THAT(RefusalOf("[\"\xC3\x28\"]"), HasSubstr("not UTF-8"));
    EXPECT_THAT(RefusalOf("[\"\\ud800\"]"), HasSubstr("surrogate"));
    EXPECT_THAT(RefusalOf("[\"\n\"]"), HasSubstr("control character"));
    EXPECT_THAT(RefusalOf("[\"a"), HasSubstr("no closing quote"));
    EXPECT_THAT(RefusalOf("[1.]"), HasSubstr("behind its point"));
    EXPECT_THAT(RefusalOf("[-]"), HasSubstr("no digits"));
    EXPECT_THAT(RefusalOf("[1e]"), HasSubstr("exponent"));
    EXPECT_THAT(RefusalOf(std::string("{\0\"\0", 4)), HasSubstr("UTF-16"));
}

TEST(JsonPlaces, AMessageNeverEndsInsideACharacter)
{
    EXPECT_EQ(OneLine("abc\ndef"), "abc def");
    EXPECT_EQ(OneLine("aaa\xC3\xA9", 4), "aaa...");
    EXPECT_EQ(OneLine("aaa\xC3\xA9", 5), "aaa\xC3\xA9");
}

// A valid text with a few bytes spoiled: both parsers must agree on whether it is still one.
RC_GTEST_PROP(JsonPlaces, AgreesWithAnotherParserOnWhatIsJson, ())
{
    std::string text = SAMPLE;
    const auto spoils = *rc::gen::container<std::vector<std::pair<std::size_t, int>>>(
        rc::gen::pair(rc::gen::inRange<std::size_t>(0, SAMPLE.size()), rc::gen::inRange(0, 400)));
    const std::string likely = "{}[]\",:0123456789.eE+-truefalsn \\u\n";
    for (const auto& [at, what] : spoils) {
        const std::size_t place = at % text.size();
        if (what < 256) {
            text[place] = static_cast<char>(what);
        } else if (what < 320) {
            text[place] = likely[static_cast<std::size_t>(what) % likely.size()];
        } else if (what < 360 && text.size() > 2) {
            text.erase(place, 1);
        } else {
            text.insert(place, 1, likely[static_cast<std::size_t>(what) % likely.size()]);
        }
    }
    const std::string refusal = RefusalOf(text);
    RC_PRE(refusal.find("stands twice") == std::string::npos);
    RC_ASSERT(refusal.empty() == nlohmann::json::accept(text));
}

TEST(JsonSplice, ReplacingAValueKeepsEveryOtherByte)
{
    const JsonPlaces places(SAMPLE);
    JsonSplice splice(places);
    splice.Replace(places.At("/asset/n"), "7");
    splice.Replace(places.At("/list/1/b~1c~0d/0"), "\"longer than before\"");
    std::string expected = SAMPLE;
    expected.replace(expected.find("1.50e+00"), 8, "7");
    expected.replace(expected.find("true"), 4, "\"longer than before\"");
    EXPECT_EQ(splice.Render(), expected);
}

TEST(JsonSplice, AddedElementsImitateTheWhiteSpaceBeforeTheLastOne)
{
    const std::string text = "{\n  \"a\": [\n    1,\n    2\n  ],\n  \"b\" : [1,2]\n}\n";
    const JsonPlaces places(text);
    JsonSplice splice(places);
    splice.AppendElement(places.At("/a"), "3");
    splice.AppendElement(places.At("/a"), "4");
    splice.AppendElement(places.At("/b"), "3");
    splice.AppendMember(places.Root(), "c", "[]");
    EXPECT_EQ(splice.Render(),
              "{\n  \"a\": [\n    1,\n    2,\n    3,\n    4\n  ],\n  \"b\" : [1,2,3],\n  \"c\" : []\n}\n");
}

TEST(JsonSplice, EmptyContainersTakeElements)
{
    const std::string text = R"({"a":[],"b":{},"c":[ ]})";
    const JsonPlaces places(text);
    JsonSplice splice(places);
    splice.AppendElement(places.At("/a"), "1");
    splice.AppendElement(places.At("/a"), "2");
    splice.AppendMember(places.At("/b"), "k", "3");
    splice.AppendElement(places.At("/c"), "4");
    EXPECT_EQ(splice.Render(), R"({"a":[1,2],"b":{"k":3},"c":[4 ]})");
}

TEST(JsonSplice, RemovedMembersTakeOneCommaWithThem)
{
    const std::string text = R"({"a":1, "b":2, "c":3, "d":4})";
    const JsonPlaces places(text);
    const auto without = [&](const std::vector<std::string>& keys) {
        JsonSplice splice(places);
        for (const std::string& key : keys) {
            splice.RemoveMember(places.Root(), places.Member(places.Root(), key));
        }
        return splice.Render();
    };
    EXPECT_EQ(without({"a"}), R"({"b":2, "c":3, "d":4})");
    EXPECT_EQ(without({"b"}), R"({"a":1, "c":3, "d":4})");
    EXPECT_EQ(without({"d"}), R"({"a":1, "b":2, "c":3})");
    EXPECT_EQ(without({"a", "b"}), R"({"c":3, "d":4})");
    EXPECT_EQ(without({"b", "c"}), R"({"a":1, "d":4})");
    EXPECT_EQ(without({"a", "d"}), R"({"b":2, "c":3})");
    EXPECT_EQ(without({"a", "b", "c", "d"}), "{}");
}

TEST(JsonSplice, AMemberCanComeWhereAllOthersWent)
{
    const std::string text = R"({"a":{"x":1}})";
    const JsonPlaces places(text);
    JsonSplice splice(places);
    splice.RemoveMember(places.At("/a"), places.At("/a/x"));
    splice.AppendMember(places.At("/a"), "y", "2");
    EXPECT_EQ(nlohmann::json::parse(splice.Render()), nlohmann::json::parse(R"({"a":{"y":2}})"));
}

// Random replacements and additions in a text: the result says what another library's patch says, and taking the new
// texts out again gives the bytes that were there.
RC_GTEST_PROP(JsonSplice, ChangesAreThoseOfAPatchAndTouchNothingElse, (const std::vector<unsigned>& picks))
{
    const JsonPlaces places(SAMPLE);
    JsonSplice splice(places);
    nlohmann::json patched = nlohmann::json::parse(SAMPLE);
    std::string expected = SAMPLE;
    std::map<std::size_t, std::pair<std::size_t, std::string>> replaced;
    for (const unsigned pick : picks) {
        const auto v = static_cast<JsonValue>(pick % places.ValueCount());
        if (places.Is(v, JsonKind::Object) || places.Is(v, JsonKind::Array)) {
            continue;
        }
        const std::string text = "\"new" + std::to_string(pick) + "\"";
        splice.Replace(v, text);
        patched[nlohmann::json::json_pointer(places.Pointer(v))] = nlohmann::json::parse(text);
        replaced[places.Start(v)] = {places.End(v), text};
    }
    for (auto r = replaced.rbegin(); r != replaced.rend(); ++r) {
        expected.replace(r->first, r->second.first - r->first, r->second.second);
    }
    RC_ASSERT(splice.Render() == expected);
    splice.AppendElement(places.At("/list"), "42");
    patched["list"].push_back(42);
    RC_ASSERT(nlohmann::json::parse(splice.Render()) == patched);
}

} // namespace
} // namespace skindesk::gltf
