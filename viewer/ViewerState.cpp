// The viewer's selection and frame state.
#include "viewer/ViewerState.h"

#include <vector>

std::int64_t ViewerFieldSelected = 0;
std::uint8_t ViewerFieldCounter = 0;
std::uint8_t ViewerDecoderRan = 0;
std::uint8_t ViewerInstanceFirst = 0;
std::uint8_t ViewerInstanceEnd = 0;
std::uint8_t ViewerSmbiosMajor = 0;
std::uint8_t ViewerSmbiosMinor = 0;
RyxBin* ViewerFieldBin = nullptr;

namespace {

std::vector<RyxBinOwner>& KeptBins() {
    static std::vector<RyxBinOwner> bins;
    return bins;
}

} // namespace

void ViewerBinClear() {
    ViewerFieldBin = nullptr;
}

void ViewerBinKeep(RyxBin* bin) {
    KeptBins().emplace_back(bin);
    ViewerFieldBin = bin;
}

void ViewerBinsRelease() {
    KeptBins().clear();
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
