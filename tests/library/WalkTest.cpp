// The structure walk, strings and fields on tables written out by hand, the field table, and value containers.
#include "Lib/API/RyxBin.h"
#include "Lib/API/RyxSmbios.h"
#include "Lib/Common/DmiParser.h"
#include "Lib/DmiFieldTable.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <string>

namespace {

using Bytes = std::vector<std::uint8_t>;

// An OEM string list, a system whose set lacks nothing, an end-of-table structure; behind it bytes of no structure.
const Bytes Table{11,  5, 0x10, 0,    2, 'a', 0,    'b', 'c', 0, 0,              // two strings
                  1,   8, 0x20, 0,    1, 2,   0,    9,   'm', 0, 'p', 'q', 0, 0, // strings 1, 2, none, beyond
                  11,  5, 0x01, 1,    7, 0,   0,                                 // a handle above 00FFh
                  11,  5, 0x30, 0,    9, 0,   0,                                 // no strings
                  127, 4, 0xFE, 0xFF, 0, 0,   0xAA, 0xBB};

DmiTableCopy CopyOf(const Bytes& bytes) {
    DmiTableCopy copy{std::make_unique<std::uint8_t[]>(bytes.size()), static_cast<std::uint32_t>(bytes.size()), 28};
    std::copy(bytes.begin(), bytes.end(), copy.Bytes.get());
    return copy;
}

// A field of the first instance of a type: its bytes as characters, or the status.
std::string Field(const DmiStruct& structure, std::uint16_t type, std::uint16_t row, RyxStatus expected = RyxOk) {
    std::uint16_t found = 0;
    std::uint16_t descriptor = 0;
    DmiFieldNumberResolve(type * RyxFieldsPerType + row, &found, &descriptor);
    RyxBin* bin = nullptr;
    EXPECT_EQ(DmiStructFieldGet(structure, descriptor, &bin), expected) << type << " " << row;
    const RyxBinOwner owner(bin);
    return bin == nullptr ? "" : std::string(bin->Data, bin->Data + bin->Size);
}

TEST(Walk, StepsOverStringSetsToTheLastStructure) {
    DmiStruct structure{Table};
    std::string types;
    do {
        types += std::to_string(structure.Type()) + " ";
    } while (DmiNextStructGet(&structure));
    // Two bytes are left behind the last structure: too few for a header.
    EXPECT_EQ(types, "11 1 11 11 127 ");
    EXPECT_EQ(structure.Handle(), 0xFFFE);
    EXPECT_FALSE(DmiStruct{{}}.Exists());
}

TEST(Walk, TheNextStructureFollowsTheFirstTwoZeros) {
    std::mt19937 random(20261122);
    for (int round = 0; round < 20000; ++round) {
        Bytes table{11, 4, 0, 0};
        const std::size_t length = random() % 120;
        for (std::size_t i = 0; i < length; ++i) {
            const std::size_t pick = random() % (round % 2 == 0 ? 4 : 12);
            table.push_back(pick < 4 ? Bytes{0, 1, 0x80, 0xFF}[pick] : 'a');
        }
        std::size_t next = 4;
        while (next + 1 < table.size() && (table[next] != 0 || table[next + 1] != 0)) {
            ++next;
        }
        next = std::min(next + 2, table.size());
        const bool follows = table.size() - next >= 4;
        const std::unique_ptr<std::uint8_t[]> exact(new std::uint8_t[table.size()]);
        std::copy(table.begin(), table.end(), exact.get());
        DmiStruct structure({exact.get(), table.size()});
        ASSERT_EQ(DmiNextStructGet(&structure), follows) << round;
        ASSERT_EQ(structure.From(0).size(), follows ? table.size() - next : table.size()) << round;
    }
    DmiStruct none{{}};
    EXPECT_FALSE(DmiNextStructGet(&none));
}

TEST(Walk, InstancesCountByHandle) {
    const DmiTableCopy copy = CopyOf(Table);
    DmiStruct found{{}};
    ASSERT_TRUE(DmiInstanceFind(copy, 11, 1, &found));
    EXPECT_EQ(found.Handle(), 0x10);
    ASSERT_TRUE(DmiInstanceFind(copy, 11, 2, &found));
    EXPECT_EQ(found.Handle(), 0x30);
    EXPECT_FALSE(DmiInstanceFind(copy, 11, 3, &found));
    EXPECT_FALSE(DmiInstanceFind(copy, 11, 0, &found));
    EXPECT_TRUE(DmiInstanceFind(copy, 127, 1, &found));
    ASSERT_TRUE(DmiInstanceFind(copy, 11, 2, &found, true));
    EXPECT_EQ(found.Handle(), 0x101) << "of the whole table every structure counts";
    ASSERT_TRUE(DmiInstanceFind(copy, 11, 3, &found, true));
    EXPECT_EQ(found.Handle(), 0x30);
    EXPECT_FALSE(DmiInstanceFind(copy, 11, 4, &found, true));
}

// Copies of equal bytes are walked once. What is found lies in the copy that was asked, and a copy with one byte
// changed, or of another size, is one of its own.
TEST(Walk, EveryCopyIsLookedUpByItsOwnBytes) {
    Bytes retyped = Table;
    retyped[25] = 12; // the structure with a handle above 00FFh
    Bytes shifted = Table;
    shifted.insert(shifted.begin() + 9, 'd');
    const Bytes cut(Table.begin(), Table.begin() + 30);
    for (const bool whole : {false, true, false}) {
        const std::pair<Bytes, int> tables[] = {{Table, 2 + whole},   {Table, 2 + whole}, {retyped, 2},
                                                {shifted, 2 + whole}, {cut, 1 + whole},   {{}, 0},
                                                {Table, 2 + whole}};
        for (const auto& [bytes, instances] : tables) {
            const DmiTableCopy copy = CopyOf(bytes);
            DmiStruct found{{}};
            int count = 0;
            while (DmiInstanceFind(copy, 11, static_cast<std::uint32_t>(count + 1), &found, whole)) {
                EXPECT_EQ(found.Type(), 11);
                EXPECT_EQ(&found.From(0).back(), &copy.Bytes[copy.Size - 1]);
                ++count;
            }
            EXPECT_EQ(count, instances) << bytes.size() << whole;
        }
    }
    EXPECT_FALSE(DmiInstanceFind(CopyOf(Table), 256 + 11, 1, std::make_unique<DmiStruct>(Table).get()));
}

// A length below that of a header is no structure's: the whole table ends there.
TEST(Walk, TheWholeTableEndsAtALengthBelowTheHeaders) {
    for (std::uint8_t length = 0; length <= 4; ++length) {
        Bytes broken(Table);
        broken.insert(broken.end() - 8, {200, length, 0x40, 0, 0, 0}); // in front of type 127
        const DmiTableCopy copy = CopyOf(broken);
        DmiStruct found{{}};
        for (const std::uint16_t type : {200, 127}) {
            EXPECT_EQ(DmiInstanceFind(copy, type, 1, &found, true), length == 4);
        }
        EXPECT_TRUE(DmiInstanceFind(copy, 200, 1, &found)) << "it counts where not the whole table is wanted";
        const std::array<DmiTypeCount, 256> counts = DmiStructuresCount(copy);
        EXPECT_EQ(counts[11].Whole, 3U);
        EXPECT_EQ(counts[11].Limited, 2U);
        EXPECT_EQ(counts[127].Whole + counts[200].Whole, length == 4 ? 2U : 0U);
        EXPECT_EQ(counts[127].Limited, length == 4 ? 1U : 0U) << "whatever its handle";
    }
}

TEST(Walk, TheStringsOfASet) {
    const auto strings = [](std::initializer_list<std::uint8_t> set) {
        Bytes structure{200, 4, 0, 0};
        structure.insert(structure.end(), set);
        RyxBin* bin = nullptr;
        EXPECT_EQ(DmiStructStringsGet(DmiStruct{structure}, &bin), RyxOk);
        const RyxBinOwner owner(bin);
        return bin == nullptr ? "none" : std::string(bin->Data, bin->Data + bin->Size);
    };
    EXPECT_EQ(strings({'a', 0, 'b', 'c', 0, 0, 'd', 0, 0}), std::string("a\0bc\0", 5));
    EXPECT_EQ(strings({'a', 0, 'b', 'c', 0}), std::string("a\0bc\0", 5)) << "the table's end";
    EXPECT_EQ(strings({'a', 0, 'b', 'c'}), std::string("a\0bc\0", 5));
    EXPECT_EQ(strings({0, 'a', 0, 0}), "");
    EXPECT_EQ(strings({0, 0}), "");
    EXPECT_EQ(strings({}), "");
}

TEST(Walk, FieldsAreBoundedByStructureVersionAndTable) {
    DmiStruct system{{}};
    const DmiTableCopy copy = CopyOf(Table);
    ASSERT_TRUE(DmiInstanceFind(copy, 1, 1, &system));
    EXPECT_EQ(Field(system, 1, 2), std::string("\x20\0", 2));
    EXPECT_EQ(Field(system, 1, 3), std::string("m\0", 2));
    EXPECT_EQ(Field(system, 1, 4), std::string("pq\0", 3));
    EXPECT_EQ(Field(system, 1, 5), std::string("\0", 1)) << "string number 0";
    EXPECT_EQ(Field(system, 1, 6), std::string("\0", 1)) << "a number beyond the set";
    EXPECT_EQ(Field(system, 1, 7, RyxErrorUnsupported), "") << "at the stated length";

    // The same structure, but the table ends inside its last string, and then inside its formatted area.
    const Bytes cut(Table.begin() + 11, Table.begin() + 22);
    EXPECT_EQ(Field(DmiStruct{cut, 28}, 1, 4), std::string("p\0", 2)) << "the NUL is missing";
    EXPECT_EQ(Field(DmiStruct{Bytes(cut.begin(), cut.begin() + 5), 28}, 1, 4, RyxErrorUnsupported), "");

    EXPECT_EQ(Field(DmiStruct{system.From(0), 19}, 1, 3, RyxErrorUnsupported), "")
        << "an older standard than the field's";
}

// The table is well formed: offsets grow, types are contiguous, every type begins with its header rows.
TEST(FieldTable, IsWellFormed) {
    std::uint8_t row = 0;
    for (std::size_t i = 0; i < DmiFieldTable.size(); ++i) {
        const DmiFieldDescriptor& field = DmiFieldTable[i];
        const bool first = i == 0 || DmiFieldTable[i - 1].Type != field.Type;
        row = first ? 0 : row + 1;
        if (row < 3) {
            EXPECT_EQ(field.Offset, row);
            EXPECT_STREQ(field.Name, row == 0 ? "Type" : row == 1 ? "Length" : "Handle");
        }
        if (!first) {
            const bool behindList = std::strcmp(field.Name, "SKU Number") == 0 ||
                                    std::strcmp(field.Name, "Enabled Error Correcting Capabilities") == 0;
            EXPECT_GE(field.Offset, DmiFieldTable[i - 1].Offset + (behindList ? 0 : 1)) << i;
            EXPECT_GE(field.MinVersion, DmiFieldTable[i - row].MinVersion) << i;
        } else if (i > 0) {
            EXPECT_GT(field.Type, DmiFieldTable[i - 1].Type) << i;
        }
        std::uint16_t type = 0;
        std::uint16_t descriptor = 0;
        DmiFieldNumberResolve(field.Type * RyxFieldsPerType + row, &type, &descriptor);
        EXPECT_EQ(type, field.Type);
        EXPECT_EQ(descriptor, i);
    }
    // Where the rows of some types stand, counted by hand.
    EXPECT_EQ(DmiFieldTable[58].Type, 4);
    EXPECT_EQ(DmiFieldTable[193].Type, 17);
    EXPECT_EQ(DmiFieldTable[449].Type, 127);
}

// Newer rows follow those of their type, whose number stays below the next type's, and types without rows have some.
TEST(Walk, NewerRowsFollowTheirTypes) {
    std::uint16_t type = 0;
    std::uint16_t row = 0;
    std::uint32_t number = 0;
    std::uint8_t before = 0;
    for (std::size_t i = 0; i < std::size(DmiNewerFieldTable); ++i) {
        const DmiFieldDescriptor& field = DmiNewerFieldTable[i];
        const bool first = i == 0 || before != field.Type;
        EXPECT_GE(field.Type, before) << i;
        before = field.Type;
        number = first ? DmiOlderRowsOf(field.Type).Count : number + 1;
        EXPECT_LT(number, RyxFieldsPerType) << i;
        DmiFieldNumberResolve(field.Type * RyxFieldsPerType + number, &type, &row, true);
        EXPECT_EQ(row, DmiFieldCount + i);
        DmiFieldNumberResolve(field.Type * RyxFieldsPerType + number, &type, &row);
        EXPECT_TRUE(row >= DmiFieldCount || DmiFieldTable[row].Type != field.Type) << i;
    }
    for (const std::uint32_t other : {47U, 125U, 128U, 255U}) {
        DmiFieldNumberResolve(other * RyxFieldsPerType + 2, &type, &row, true);
        EXPECT_EQ(row, DmiFieldCount - 1U) << other;
        DmiFieldNumberResolve(other * RyxFieldsPerType + 4, &type, &row, true);
        EXPECT_EQ(row, DmiAllFieldCount - 1) << other;
        DmiFieldNumberResolve(other * RyxFieldsPerType + 5, &type, &row, true);
        EXPECT_EQ(row, DmiAllFieldCount) << other;
    }
    for (const std::uint32_t none : {1 * RyxFieldsPerType + 11, 127 * RyxFieldsPerType + 3, 256 * RyxFieldsPerType}) {
        DmiFieldNumberResolve(none, &type, &row, true);
        EXPECT_EQ(row, DmiAllFieldCount) << none;
    }
}

TEST(Values, AreMadeReadAndReleased) {
    RyxBin* bin = nullptr;
    EXPECT_EQ(RyxBinCreate(0, &bin), RyxErrorArgument);
    EXPECT_EQ(RyxBinCreate(0x100000000, &bin), RyxErrorArgument) << "the low 32 bits count";
    ASSERT_EQ(RyxBinCreate(0x100000003, &bin), RyxOk);
    std::uint8_t* data = nullptr;
    std::uint64_t size = 0;
    EXPECT_EQ(RyxBinInfoGet(bin, &data, &size), RyxOk);
    EXPECT_EQ(size, 3U);
    EXPECT_EQ(data[2], 0);
    EXPECT_EQ(RyxBinFree(bin), RyxOk);
    std::uint8_t kept[] = {1};
    EXPECT_EQ(RyxBinFree(new RyxBin{1, kept, 1}), RyxOk) << "borrowed data stays";
}
} // namespace
