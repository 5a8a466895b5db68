// The lookup of texts by code, at the borders of its parts.
#include "viewer/TextTable.h"

#include <gtest/gtest.h>

namespace {

TEST(Texts, AreFoundInTheirPartOrAreUnrecognized) {
    constexpr const char* low[] = {"zero", ""};
    constexpr const char* high[] = {"A0", "A1"};
    constexpr TextRange ranges[] = {{5, 7, "range"}, {0x90, 0x90, "single"}};
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
    };
    for (const auto& test : cases) {
        EXPECT_STREQ(TextFind(test.Table, test.Code), test.Text) << test.Code;
    }
}

} // namespace
