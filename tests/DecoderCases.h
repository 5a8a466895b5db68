// What tests of decoders share: a structure as each version shows it, and one runner for cases.
#pragma once

#include "tests/Support.h"
#include "viewer/StructDispatch.h" // before a name for bytes that one of its own would shadow
#include "viewer/ViewerState.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <initializer_list>

using StandIn::Bytes;
using StandIn::SmbiosBuilder;

// The version from which on a structure is shown up to its end, or to the next such label. An empty label: all of it.
struct Since {
    std::uint8_t Version;
    const char* Label;
};

// A table of one structure is shown whole by the latest version, and by each older one up to the first newer label.
inline void ExpectShown(std::uint8_t type, const SmbiosBuilder& table, const std::string& whole,
                        std::initializer_list<Since> rows) {
    for (std::uint8_t version = 19; version <= 28; ++version) {
        std::size_t end = whole.size();
        for (const Since& row : rows) {
            ASSERT_NE(whole.find(row.Label), std::string::npos) << row.Label;
            end = version < row.Version ? std::min(end, whole.find(row.Label)) : end;
        }
        EXPECT_EQ(Decoded(type, table, version), whole.substr(0, end)) << "version " << int(version);
    }
}

// A table, and what a selection shows of it.
struct DecoderCase {
    const char* Name;
    SmbiosBuilder Table;
    std::string Expected;
    Selection Selected = {};
};

inline void ExpectCases(std::uint8_t type, std::initializer_list<DecoderCase> cases) {
    for (const DecoderCase& each : cases) {
        EXPECT_EQ(Decoded(type, each.Table, 28, each.Selected), each.Expected) << each.Name;
    }
}

// A field selected in a structure that holds the bytes of Value from Offset on.
struct FieldCase {
    std::int64_t Field;
    std::size_t Offset;
    Bytes Value;
    std::string Lines;
};

// Each case on a structure that is `area`, behind its header, apart from the case's bytes.
inline void ExpectFields(std::uint8_t type, const Bytes& area, std::initializer_list<FieldCase> cases) {
    for (const FieldCase& each : cases) {
        Bytes changed = area;
        ASSERT_LE(each.Offset - 4 + each.Value.size(), area.size());
        std::copy(each.Value.begin(), each.Value.end(), changed.begin() + static_cast<std::ptrdiff_t>(each.Offset - 4));
        const std::string name = "field " + std::to_string(each.Field) + ", value " + std::to_string(each.Value[0]);
        ExpectCases(type, {{name.c_str(), SmbiosBuilder().Begin(type).Raw(changed), "\n" + each.Lines, {each.Field}}});
        EXPECT_EQ(ViewerFieldCounter, each.Field);
    }
}

// The lines of a list of bit names for a value.
inline std::string Bits(std::uint64_t value, std::initializer_list<const char*> names) {
    std::string lines;
    int bit = 0;
    for (const char* name : names) {
        lines +=
            "  Bit" + std::to_string(bit) + " " + name + ((value >> bit & 1) != 0 ? " - 1 (Yes)\n" : " - 0 (No)\n");
        ++bit;
    }
    return lines;
}
