// The two tables indexed by structure type, and what can be selected.
#include "viewer/StructDispatch.h"

constexpr std::array<const StructDecoder*, 128> StructDecoderTable = [] {
    std::array<const StructDecoder*, 128> table = {
        &StructDecodeType0,  &StructDecodeType1,  &StructDecodeType2,  &StructDecodeType3,  &StructDecodeType4,
        &StructDecodeType5,  &StructDecodeType6,  &StructDecodeType7,  &StructDecodeType8,  &StructDecodeType9,
        &StructDecodeType10, &StructDecodeType11, &StructDecodeType12, &StructDecodeType13, &StructDecodeType14,
        &StructDecodeType15, &StructDecodeType16, &StructDecodeType17, &StructDecodeType18, &StructDecodeType19,
        &StructDecodeType20, &StructDecodeType21, &StructDecodeType22, &StructDecodeType23, &StructDecodeType24,
        &StructDecodeType25, &StructDecodeType26, &StructDecodeType27, &StructDecodeType28, &StructDecodeType29,
        &StructDecodeType30, &StructDecodeType31, &StructDecodeType32, &StructDecodeType33, &StructDecodeType34,
        &StructDecodeType35, &StructDecodeType36, &StructDecodeType37, &StructDecodeType38, &StructDecodeType39,
        &StructDecodeType40, &StructDecodeType41, &StructDecodeType42};
    table[126] = &StructDecodeType126;
    table[127] = &StructDecodeType127;
    return table;
}();

constexpr std::array<const char*, 128> StructTypeNameTable = [] {
    std::array<const char*, 128> table{};
    for (std::size_t type = 0; type < table.size(); ++type) {
        table[type] = StructDecoderTable[type] != nullptr ? StructDecoderTable[type]->Name : "";
    }
    return table;
}();

RyxStatus SelectionCheck(std::uint64_t type, std::uint64_t instance, std::uint64_t field) {
    constexpr std::uint64_t limit = 128;
    constexpr std::uint64_t ipmi = 38; // shows its first structure whichever is asked for
    if (instance > limit || type > limit || field > limit) {
        return RyxErrorUnsupported;
    }
    const StructDecoder* const decoder =
        type < StructDecoderTable.size() ? StructDecoderTable[static_cast<std::size_t>(type)] : nullptr;
    const bool refused = instance > 1 && type != ipmi && decoder != nullptr && decoder->FirstOnly();
    return refused ? RyxErrorUnsupported : RyxOk;
}
