// The viewer's selection and frame state.
#include "viewer/ViewerState.h"

#include "Lib/API/RyxPrint.h"

#include <array>
#include <new>
#include <optional>
#include <utility>

std::int64_t ViewerFieldSelected = 0;
std::uint8_t ViewerFieldCounter = 0;
std::uint8_t ViewerDecoderRan = 0;
std::uint8_t ViewerInstanceFirst = 0;
std::uint8_t ViewerInstanceEnd = 0;
std::uint8_t ViewerSmbiosMajor = 0;
std::uint8_t ViewerSmbiosMinor = 0;
RyxBin* ViewerFieldBin = nullptr;
bool ViewerJson = false;

namespace {

// Values are kept by the block, so that most of them take no memory beside their own.
struct KeptBlock {
    std::array<RyxBinOwner, 62> Bins;
    std::size_t Count;
    KeptBlock* Earlier;
};

KeptBlock* LatestKept = nullptr;
std::optional<bool> ToConsole;

} // namespace

bool ViewerToConsole() {
    if (!ToConsole) {
        ToConsole = !ViewerJson && RyxConsoleIsOutput();
    }
    return *ToConsole;
}

void ViewerToConsoleForget() {
    ToConsole.reset();
}

void ViewerBinClear() {
    ViewerFieldBin = nullptr;
}

RyxStatus ViewerBinKeep(RyxBinOwner bin) {
    if (LatestKept == nullptr || LatestKept->Count == LatestKept->Bins.size()) {
        auto* const block = new (std::nothrow) KeptBlock{{}, 0, LatestKept};
        if (block == nullptr) {
            return RyxErrorMemory;
        }
        LatestKept = block;
    }
    ViewerFieldBin = bin.get();
    LatestKept->Bins[LatestKept->Count++] = std::move(bin);
    return RyxOk;
}

void ViewerBinsRelease() {
    while (LatestKept != nullptr) {
        const std::unique_ptr<KeptBlock> kept(LatestKept);
        LatestKept = kept->Earlier;
    }
    ViewerBinClear();
}

void ViewerStateReset() {
    ViewerBinsRelease();
    ViewerToConsoleForget();
    ViewerFieldSelected = 0;
    ViewerFieldCounter = 0;
    ViewerDecoderRan = 0;
    ViewerInstanceFirst = 1;
    ViewerInstanceEnd = 128;
    ViewerSmbiosMajor = 0;
    ViewerSmbiosMinor = 0;
    ViewerJson = false;
}
