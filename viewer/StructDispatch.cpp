// The two tables indexed by structure type, and what can be selected.
#include "viewer/StructDispatch.h"

constexpr std::array<const StructDecoder*, 128> StructDecoderTable = [] {
    std::array<const StructDecoder*, 128> table{};
#define STRUCT_DECODER_ENTER(type) table[type] = &StructDecodeType##type;
    STRUCT_TYPES(STRUCT_DECODER_ENTER)
#undef STRUCT_DECODER_ENTER
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
