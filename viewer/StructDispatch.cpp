// The two tables indexed by structure type, and what can be selected.
#include "viewer/StructDispatch.h"

#include <algorithm>

namespace {

constexpr std::size_t OemFirst = 128;

} // namespace

constexpr std::array<const StructDecoder*, 256> StructDecoderTable = [] {
    std::array<const StructDecoder*, 256> table{};
    std::fill(std::fill_n(table.begin(), OemFirst, &StructDecodeUnknown), table.end(), &StructDecodeOem);
#define STRUCT_DECODER_ENTER(type) table[type] = &StructDecodeType##type;
    STRUCT_TYPES(STRUCT_DECODER_ENTER)
#undef STRUCT_DECODER_ENTER
    return table;
}();

constexpr std::array<const char*, 256> StructTypeNameTable = [] {
    std::array<const char*, 256> table{};
    for (std::size_t type = 0; type < table.size(); ++type) {
        table[type] = StructDecoderTable[type]->Name;
    }
    return table;
}();

const StructDecoder* StructDecoderFind(std::uint64_t type) {
    const StructDecoder* const decoder =
        type < StructDecoderTable.size() ? StructDecoderTable[static_cast<std::size_t>(type)] : nullptr;
    const bool hidden = decoder != nullptr && decoder->Form >= DecoderForm::Newer && !RyxSmbiosWholeGet();
    return hidden ? nullptr : decoder;
}

std::uint64_t InstanceLimit() {
    return RyxSmbiosWholeGet() ? 254 : 128;
}

std::uint64_t InstanceEndAll() {
    return RyxSmbiosWholeGet() ? 255 : 128;
}

StructCounts StructuresCount() {
    StructCounts sum{};
    std::array<DmiTypeCount, 256> counts{};
    if (RyxSmbiosCountsGet(&counts) != RyxOk) {
        return sum;
    }
    for (std::size_t type = 0; type < counts.size(); ++type) {
        const DecoderForm form = StructDecoderTable[type]->Form;
        const std::uint32_t shown = form == DecoderForm::Loop     ? counts[type].Limited
                                    : form == DecoderForm::Single ? std::min(counts[type].Limited, 1U)
                                                                  : 0;
        sum.All += counts[type].Whole;
        sum.Hidden += counts[type].Whole - shown;
    }
    return sum;
}

RyxStatus SelectionCheck(std::uint64_t type, std::uint64_t instance, std::uint64_t field) {
    constexpr std::uint64_t limit = 128;
    constexpr std::uint64_t ipmi = 38; // shows its first structure whichever is asked for
    if (instance > InstanceLimit() || type > (RyxSmbiosWholeGet() ? 255 : limit) || field > limit) {
        return RyxErrorUnsupported;
    }
    const StructDecoder* const decoder = StructDecoderFind(type);
    const bool refused = instance > 1 && type != ipmi && decoder != nullptr && decoder->FirstOnly();
    return refused ? RyxErrorUnsupported : RyxOk;
}
