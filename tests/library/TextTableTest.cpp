// The lookup of texts by code, at the borders of its parts.
#include "viewer/TextTable.h"

#include <gtest/gtest.h>

namespace {

TEST(Texts, AreFoundInTheirPartOrAreUnrecognized) {
    static constexpr const char* low[] = {"zero", ""};
    static constexpr const char* high[] = {"A0", "A1"};
    static constexpr TextRange ranges[] = {{5, 7, "range"}, {0x90, 0x90, "single"}};
    static constexpr TextRange newer[] = {{4, "newer"}, {0x80, 0x8F, "newer range"}};
    static constexpr TextRange behind[] = {{0xA2, "newer"}};
    constexpr TextTable named = TextTable(low, ranges).With(newer);
    struct {
        TextTable Table;
        std::uint64_t Code;
        const char* Text;
    } const cases[] = {
        {low, 1, ""}, // an entry that is empty stays so
        {low, 2, "Unrecognized"},
        {low, 0xA0, "Unrecognized"},
        {low, 0x100000000, "Unrecognized"},
        {{low, high}, 0x9F, "Unrecognized"},
        {{low, high}, 0xA1, "A1"},
        {{low, high}, 0xA2, "Unrecognized"},
        {{low, ranges}, 0, "zero"},
        {{low, ranges}, 4, "Unrecognized"},
        {{low, ranges}, 7, "range"},
        {{low, ranges}, 8, "Unrecognized"},
        {{low, ranges}, 0x90, "single"},
        {named, 7, "range"},
        {named, 4, "newer"},
        {named, 0x8F, "newer range"},
        {named, 0x91, "Unrecognized"},
        {TextTable(low, high).With(behind), 0xA1, "A1"},
        {TextTable(low, high).With(behind), 0xA2, "newer"},
    };
    for (const auto& test : cases) {
        EXPECT_STREQ(TextFind(test.Table, test.Code), test.Text) << test.Code;
    }
}

} // namespace
