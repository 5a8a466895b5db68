// This process among the running tools: the machine-wide count, the image mutex and the global mutex.
#include "Lib/Common/Instance.h"

#include "Lib/Common/DriverLoad.h"
#include "Lib/Common/Print.h"
#include "Lib/Common/QelCrypto.h"
#include "Lib/Platform/Files.h"

#include <cstdio>
#include <memory>

namespace {

constexpr char CountKey[] = "Software\\RyxTool";
constexpr char CountValue[] = "ToolsRefCount";
constexpr std::uint32_t GlobalMutexWait = 5000; // ms

InstanceState Instance;

RyxStatus ImageRead(std::unique_ptr<std::uint8_t[]>* image, std::uint32_t* size) {
    const RyxStatus status = ExecutableRead(image, size);
    if (status == RyxErrorFileOpen || status == RyxErrorMemory) {
        std::FILE* const stream = PrintStream();
        std::fprintf(stream, "%s\n", status == RyxErrorFileOpen ? "Open file failed." : "Allocate memory failed.");
        std::fflush(stream);
    }
    return status;
}

} // namespace

InstanceState& InstanceStateGet() {
    return Instance;
}

void InstanceStateReset() {
    Instance = InstanceState{};
}

std::uint32_t ToolsRefCountGet() {
    std::uint32_t count = 0;
    if (const RegistryKey key = RegistryKeyOpen(CountKey, SharedRegistryView())) {
        RegistryNumberRead(key, CountValue, &count);
    }
    return count;
}

bool ToolsRefCountIncrement() {
    const ToolsLock lock;
    const RegistryKey key = RegistryKeyCreate(CountKey, SharedRegistryView());
    if (key == nullptr) {
        return false;
    }
    std::uint32_t count = 0;
    bool missing = false;
    // Without a value the count begins at 1. One that is there but can't be read is left alone: other tools are in it.
    return (RegistryNumberRead(key, CountValue, &count, &missing) || missing) &&
           RegistryNumberWrite(key, CountValue, count + 1);
}

void ToolsRefCountDecrement() {
    const ToolsLock lock;
    const RegistryKey key = RegistryKeyOpen(CountKey, SharedRegistryView());
    if (key == nullptr) {
        return;
    }
    std::uint32_t count = 0;
    if (RegistryNumberRead(key, CountValue, &count)) {
        // A count of 0, which no tool leaves, goes too.
        if (count <= 1) {
            RegistryValueDelete(key, CountValue);
        } else {
            RegistryNumberWrite(key, CountValue, count - 1);
        }
    }
}

RyxStatus ImageRegister() {
    std::unique_ptr<std::uint8_t[]> image;
    std::uint32_t size = 0;
    if (ImageRead(&image, &size) != RyxOk) {
        RyxPrintf("Get file failed.\n");
        return RyxErrorFileRead;
    }
    QelSha1Digest digest;
    if (QelSha1(image.get(), size, &digest) != RyxOk) {
        return RyxErrorDigest;
    }
    char text[17];
    std::snprintf(text, sizeof text, "%X%X%X%X%X%X%X%X", digest[0], digest[1], digest[2], digest[3], digest[4],
                  digest[5], digest[6], digest[7]);
    char name[32];
    std::snprintf(name, sizeof name, "Global\\{%s}", text);
    bool existed = false;
    Instance.ImageMutex = MutexCreate(name, &existed);
    return existed ? RyxInstanceAnother : RyxInstanceFirst;
}

void GlobalMutexAcquire() {
    if (!Instance.GlobalEnabled) {
        return;
    }
    if (Instance.GlobalMutex == nullptr) {
        Instance.GlobalMutex = MutexCreate("RyxGlobalMutex", nullptr);
    }
    if (Instance.GlobalMutex != nullptr && !Instance.GlobalHeld) {
        Instance.GlobalHeld = MutexAcquire(Instance.GlobalMutex, GlobalMutexWait);
    }
}

void GlobalMutexRelease() {
    if (Instance.GlobalEnabled && Instance.GlobalHeld) {
        MutexRelease(Instance.GlobalMutex);
        Instance.GlobalHeld = false;
    }
}

void GlobalMutexClose() {
    GlobalMutexRelease();
    MutexClose(Instance.GlobalMutex);
    Instance.GlobalMutex = nullptr;
}
