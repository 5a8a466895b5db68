// The viewer's selection and frame state.
#include "viewer/ViewerState.h"

#include <new>
#include <utility>

std::int64_t ViewerFieldSelected = 0;
std::uint8_t ViewerFieldCounter = 0;
std::uint8_t ViewerDecoderRan = 0;
std::uint8_t ViewerInstanceFirst = 0;
std::uint8_t ViewerInstanceEnd = 0;
std::uint8_t ViewerSmbiosMajor = 0;
std::uint8_t ViewerSmbiosMinor = 0;
RyxBin* ViewerFieldBin = nullptr;

namespace {

struct KeptBin {
    RyxBinOwner Bin;
    KeptBin* Earlier;
};

KeptBin* LatestKept = nullptr;

} // namespace

void ViewerBinClear() {
    ViewerFieldBin = nullptr;
}

RyxStatus ViewerBinKeep(RyxBinOwner bin) {
    auto* const kept = new (std::nothrow) KeptBin{nullptr, LatestKept};
    if (kept == nullptr) {
        return RyxErrorMemory;
    }
    ViewerFieldBin = bin.get();
    kept->Bin = std::move(bin);
    LatestKept = kept;
    return RyxOk;
}

void ViewerBinsRelease() {
    while (LatestKept != nullptr) {
        const std::unique_ptr<KeptBin> kept(LatestKept);
        LatestKept = kept->Earlier;
    }
    ViewerBinClear();
}

void ViewerStateReset() {
    ViewerBinsRelease();
    ViewerFieldSelected = 0;
    ViewerFieldCounter = 0;
    ViewerDecoderRan = 0;
    ViewerInstanceFirst = 1;
    ViewerInstanceEnd = 128;
    ViewerSmbiosMajor = 0;
    ViewerSmbiosMinor = 0;
}
