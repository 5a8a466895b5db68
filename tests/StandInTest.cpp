// Tests of the stand-in for Windows: what the bindings and the other tests rely on.
#include "machine/model/Machine.h"
#include "machine/windows/MachineSet.h"
#include "tests/Support.h"
#include "tests/ToolRun.h"

#include <windows.h>

#include <gtest/gtest.h>
#include <string>
#include <unistd.h>
#include <vector>

using StandIn::Bytes;
using StandIn::Machine;
using StandIn::MachineSet;

namespace {

constexpr char DriverPath[] = "C:\\Windows\\Temp\\\\Helper.sys";

Machine Shared(const TemporaryFolder& folder) {
    Machine machine;
    machine.StateFolder = folder.Path + "/state";
    return machine;
}

// The error of a call, if it failed.
LSTATUS ErrorOf(bool works) {
    return works ? LSTATUS{ERROR_SUCCESS} : static_cast<LSTATUS>(GetLastError());
}

HANDLE Open(const std::string& path, DWORD access, DWORD disposition = OPEN_EXISTING) {
    return CreateFileA(path.c_str(), access, FILE_SHARE_READ, nullptr, disposition, 0, nullptr);
}

void DriverFileWrite() {
    const HRSRC found = FindResourceA(nullptr, MAKEINTRESOURCEA(3), "BIN");
    const HANDLE file = Open(DriverPath, GENERIC_WRITE, CREATE_NEW);
    DWORD written = 0;
    WriteFile(file, LockResource(LoadResource(nullptr, found)), SizeofResource(nullptr, found), &written, nullptr);
    CloseHandle(file);
}

SC_HANDLE ServiceCreate(SC_HANDLE manager) {
    return CreateServiceA(manager, "RYXLIB", "RYXLIB", SERVICE_ALL_ACCESS, SERVICE_KERNEL_DRIVER, SERVICE_DEMAND_START,
                          SERVICE_ERROR_NORMAL, DriverPath, nullptr, nullptr, nullptr, nullptr, nullptr);
}

HANDLE DeviceOpen(const char* name = "\\\\.\\Global\\RYXLIB") {
    return Open(name, GENERIC_READ | GENERIC_WRITE);
}

// Starts the driver and opens its device; what stays open is the test's machine to lose.
HANDLE DriverStart() {
    DriverFileWrite();
    const SC_HANDLE manager = OpenSCManagerA(nullptr, nullptr, SC_MANAGER_ALL_ACCESS);
    const SC_HANDLE service = ServiceCreate(manager);
    EXPECT_TRUE(StartServiceA(service, 0, nullptr));
    CloseServiceHandle(service);
    CloseServiceHandle(manager);
    return DeviceOpen();
}

HKEY KeyOpen(HKEY parent, const char* path, REGSAM more, LSTATUS expected = ERROR_SUCCESS) {
    HKEY key = nullptr;
    EXPECT_EQ(RegOpenKeyExA(parent, path, 0, KEY_ALL_ACCESS | more, &key), expected) << path;
    return key;
}

HKEY KeyCreate(const char* path, REGSAM more) {
    HKEY key = nullptr;
    EXPECT_EQ(RegCreateKeyExA(HKEY_LOCAL_MACHINE, path, 0, nullptr, 0, KEY_ALL_ACCESS | more, nullptr, &key, nullptr),
              ERROR_SUCCESS);
    return key;
}

TEST(StandInRegistry, TheTwoViewsAreApartAndHandlesKeepTheirs) {
    Machine machine;
    MachineSet(machine);
    const HKEY wide = KeyCreate("Software\\Tool", KEY_WOW64_64KEY);
    const DWORD seven = 7;
    ASSERT_EQ(RegSetValueExA(wide, "Count", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&seven), 4), ERROR_SUCCESS);
    KeyOpen(HKEY_LOCAL_MACHINE, "Software\\Tool", 0, ERROR_FILE_NOT_FOUND);
    RegCloseKey(KeyCreate("SOFTWARE\\tool", 0));
    DWORD data = 0;
    DWORD size = 2;
    EXPECT_EQ(RegQueryValueExA(wide, "COUNT", nullptr, nullptr, reinterpret_cast<BYTE*>(&data), &size),
              ERROR_MORE_DATA);
    EXPECT_EQ(size, 4U);
    EXPECT_EQ(RegQueryValueExA(wide, "COUNT", nullptr, nullptr, reinterpret_cast<BYTE*>(&data), &size), ERROR_SUCCESS);
    EXPECT_EQ(data, 7U);

    // A deletion has no view of its own: it works in that of the handle, and not at all where the key isn't.
    const HKEY parent = KeyOpen(HKEY_LOCAL_MACHINE, "Software", KEY_WOW64_64KEY);
    EXPECT_EQ(RegDeleteKeyA(parent, "Tool"), ERROR_SUCCESS);
    EXPECT_EQ(RegDeleteKeyA(parent, "Tool"), ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(RegSetValueExA(wide, "Count", 0, REG_DWORD, nullptr, 0), ERROR_KEY_DELETED);
    EXPECT_EQ(RegDeleteKeyA(HKEY_LOCAL_MACHINE, "Software\\Tool"), ERROR_SUCCESS);
    EXPECT_EQ(StandIn::Leftovers(),
              (std::vector<std::string>{"handle of registry key Software", "handle of registry key Software\\Tool"}));

    machine.UnderWow64 = StandIn::Wow64::No;
    MachineSet(machine);
    RegCloseKey(KeyCreate("Software\\Tool", KEY_WOW64_64KEY));
    RegCloseKey(KeyOpen(HKEY_LOCAL_MACHINE, "Software\\Tool", 0));
}

TEST(StandInService, LivesUntilItIsStoppedDeletedAndClosed) {
    MachineSet({});
    DriverFileWrite();
    const SC_HANDLE manager = OpenSCManagerA(nullptr, nullptr, SC_MANAGER_ALL_ACCESS);
    EXPECT_EQ(ErrorOf(OpenServiceA(manager, "RYXLIB", SERVICE_START)), ERROR_SERVICE_DOES_NOT_EXIST);
    const SC_HANDLE service = ServiceCreate(manager);
    EXPECT_EQ(ErrorOf(ServiceCreate(manager)), ERROR_SERVICE_EXISTS);
    SERVICE_STATUS status;
    EXPECT_EQ(ErrorOf(ControlService(service, SERVICE_CONTROL_STOP, &status)), ERROR_SERVICE_NOT_ACTIVE);
    ASSERT_TRUE(StartServiceA(service, 0, nullptr));
    EXPECT_FALSE(DeleteFileA(DriverPath));
    EXPECT_EQ(ErrorOf(Open(DriverPath, GENERIC_WRITE) != INVALID_HANDLE_VALUE), ERROR_SHARING_VIOLATION);

    const HANDLE device = DeviceOpen("\\\\.\\ryxlib");
    ASSERT_NE(device, INVALID_HANDLE_VALUE);
    EXPECT_TRUE(CloseHandle(device));
    const HANDLE another = DeviceOpen();
    EXPECT_FALSE(CloseHandle(device)) << "a closed handle is not the next one";
    EXPECT_TRUE(CloseHandle(another));

    EXPECT_TRUE(DeleteService(service));
    EXPECT_EQ(ErrorOf(ServiceCreate(manager)), ERROR_SERVICE_MARKED_FOR_DELETE);
    EXPECT_NE(DeviceOpen(), INVALID_HANDLE_VALUE);
    EXPECT_TRUE(ControlService(service, SERVICE_CONTROL_STOP, &status));
    EXPECT_EQ(DeviceOpen(), INVALID_HANDLE_VALUE);
    CloseServiceHandle(service);
    EXPECT_EQ(OpenServiceA(manager, "RYXLIB", SERVICE_START), nullptr);
    CloseServiceHandle(manager);
    EXPECT_TRUE(DeleteFileA(DriverPath));
    EXPECT_EQ(StandIn::Leftovers(), std::vector<std::string>{"handle of device Global\\RYXLIB"});
}

TEST(StandInFile, WritesStayInTheMachine) {
    const TemporaryFolder folder;
    MachineSet({});
    const std::string real = folder.Write("real.txt", std::string("real"));
    const std::string made = folder.Path + "\\made.txt";
    for (const std::string& path : {made, std::string("C:\\Windows\\Temp\\made.txt")}) {
        const HANDLE file = Open(path, GENERIC_WRITE, CREATE_NEW);
        DWORD written = 0;
        ASSERT_TRUE(WriteFile(file, "abc", 3, &written, nullptr)) << path;
        EXPECT_EQ(ErrorOf(Open(path, GENERIC_READ) != INVALID_HANDLE_VALUE), ERROR_SHARING_VIOLATION);
        CloseHandle(file);
    }
    EXPECT_NE(access((folder.Path + "/made.txt").c_str(), F_OK), 0);
    EXPECT_EQ(Open("C:\\Elsewhere\\x", GENERIC_WRITE, CREATE_NEW), INVALID_HANDLE_VALUE);

    // A file of this computer can be read by a path with backslashes, and stays as it is.
    const std::string slashed = folder.Path + "\\real.txt";
    char text[8] = {};
    DWORD got = 0;
    const HANDLE file = Open(slashed, GENERIC_READ);
    EXPECT_EQ(GetFileSize(file, nullptr), 4U);
    EXPECT_TRUE(ReadFile(file, text, sizeof text, &got, nullptr));
    EXPECT_EQ(std::string(text, got), "real");
    CloseHandle(file);
    for (const DWORD disposition : {OPEN_EXISTING, CREATE_NEW}) {
        EXPECT_EQ(Open(slashed, GENERIC_WRITE, disposition), INVALID_HANDLE_VALUE);
    }
    EXPECT_FALSE(DeleteFileA(real.c_str()));
    EXPECT_EQ(access(real.c_str(), F_OK), 0);
}

TEST(StandInState, OutlivesAKilledProcess) {
    const TemporaryFolder folder;
    OtherProcess killed(
        [&folder] {
            MachineSet(Shared(folder));
            DriverStart();
            const HKEY key = KeyCreate("Software\\A key %", KEY_WOW64_64KEY);
            const DWORD two = 2;
            RegSetValueExA(key, "", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&two), sizeof two);
            return 0U;
        },
        [] {});
    killed.Kill();
    MachineSet(Shared(folder));
    EXPECT_EQ(StandIn::Leftovers(),
              (std::vector<std::string>{"driver RYXLIB from C:\\Windows\\Temp\\\\Helper.sys",
                                        "file C:\\Windows\\Temp\\\\Helper.sys", "registry key Software\\A key %",
                                        "registry value Software\\A key %\\ = 2", "service RYXLIB"}));
    EXPECT_TRUE(CloseHandle(DeviceOpen())) << "the driver goes on";

    // A state that can't be read is an error, and isn't written over.
    folder.Write("state/state", std::string("something else\n"));
    HKEY key = nullptr;
    EXPECT_NE(RegCreateKeyExA(HKEY_LOCAL_MACHINE, "Software\\B", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr),
              ERROR_SUCCESS);
    EXPECT_EQ(DeviceOpen(), INVALID_HANDLE_VALUE);
}

} // namespace
