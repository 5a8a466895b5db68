// What tests of decoders share: structures written as bytes, and single fields with chosen values.
#pragma once

#include "tests/Support.h"
#include "viewer/ViewerState.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <initializer_list>
#include <span>

// The first structure of a table: the bytes behind the header, and the string set.
inline StandIn::SmbiosBuilder Alone(std::uint8_t type, const StandIn::Bytes& area,
                                    std::initializer_list<const char*> strings = {}) {
    StandIn::SmbiosBuilder table;
    table.Begin(type).Raw(area);
    for (const char* text : strings) {
        table.SetString(text);
    }
    return table;
}

// A field selected in a structure that holds the bytes of Value from Offset on.
struct FieldCase {
    std::int64_t Field;
    std::size_t Offset;
    StandIn::Bytes Value;
    const char* Lines;
};

// Each case on a structure that is `area` apart from the case's bytes.
inline void ExpectFields(std::uint8_t type, const StandIn::Bytes& area, std::span<const FieldCase> cases) {
    for (const FieldCase& each : cases) {
        StandIn::Bytes changed = area;
        ASSERT_LE(each.Offset - 4 + each.Value.size(), area.size());
        std::copy(each.Value.begin(), each.Value.end(), changed.begin() + static_cast<std::ptrdiff_t>(each.Offset - 4));
        EXPECT_EQ(Decoded(type, Alone(type, changed), 28, {.Field = each.Field}), std::string("\n") + each.Lines)
            << "type " << int(type) << ", field " << each.Field << ", value " << int(each.Value[0]);
        EXPECT_EQ(ViewerFieldCounter, each.Field);
    }
}

// A selected field beyond the last leaves the blank line and the number of the last field.
inline void ExpectFieldCount(std::uint8_t type, const StandIn::Bytes& area, std::uint8_t count) {
    EXPECT_EQ(Decoded(type, Alone(type, area), 28, {.Field = count + 1}), "\n");
    EXPECT_EQ(ViewerFieldCounter, count) << "type " << int(type);
}

// What stands before a text; the text must be there.
inline std::string Before(const std::string& whole, const std::string& text) {
    EXPECT_NE(whole.find(text), std::string::npos) << text;
    return whole.substr(0, whole.find(text));
}
