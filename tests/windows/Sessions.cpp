// Runs the program that lies beside it in up to two sessions at once, and says what the tools have left in the machine.
//
//     sessions WORD...
//     a+ b+    starts a session and waits until it prints, or ends; it then stands still, for nobody reads on
//     a- b-    reads a session's output to its end, into the file a.out or b.out, and prints its exit code
//     state    prints the users of the driver, the running tools, whether the service exists, the driver files
#include <windows.h>

#include <cstdio>
#include <string>

namespace {

constexpr char Quote[] = "\"";
constexpr char Arguments[] = " /eps /type";

std::string ProgramFolder() {
    char path[MAX_PATH];
    const DWORD length = GetModuleFileNameA(nullptr, path, sizeof path);
    const std::string program(path, length);
    return program.substr(0, program.rfind('\\') + 1);
}

struct Session {
    HANDLE Process = nullptr;
    HANDLE Output = nullptr;
    std::string Shown;

    bool Read(char* piece, DWORD size) {
        DWORD got = 0;
        if (!ReadFile(Output, piece, size, &got, nullptr) || got == 0) {
            return false;
        }
        Shown.append(piece, got);
        return true;
    }

    bool Start() {
        SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
        HANDLE write = nullptr;
        if (!CreatePipe(&Output, &write, &inherited, 1) || !SetHandleInformation(Output, HANDLE_FLAG_INHERIT, 0)) {
            return false;
        }
        STARTUPINFOA startup{};
        startup.cb = sizeof startup;
        startup.dwFlags = STARTF_USESTDHANDLES;
        startup.hStdInput = GetStdHandle(STD_INPUT_HANDLE);
        startup.hStdOutput = write;
        startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
        std::string command = Quote;
        command += ProgramFolder() + "Quarrinet.exe" + Quote + Arguments;
        PROCESS_INFORMATION started{};
        const bool runs = CreateProcessA(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                                         &started) != 0;
        CloseHandle(write);
        if (!runs) {
            return false;
        }
        CloseHandle(started.hThread);
        Process = started.hProcess;
        char first;
        Read(&first, 1);
        return true;
    }

    void End(const std::string& name) {
        char piece[4096];
        while (Read(piece, sizeof piece)) {
        }
        WaitForSingleObject(Process, INFINITE);
        DWORD code = 0;
        GetExitCodeProcess(Process, &code);
        std::printf("%s ended with %lu\n", name.c_str(), code);
        if (std::FILE* const file = std::fopen((name + ".out").c_str(), "wb")) {
            std::fwrite(Shown.data(), 1, Shown.size(), file);
            std::fclose(file);
        }
        CloseHandle(Output);
        CloseHandle(Process);
        *this = Session{};
    }
};

// A number in the registry as text; "none" without the value, "no key" without its key. The tools write the view of
// 64-bit programs where there is one; where there is none, asking for it changes nothing.
std::string Number(const char* path, const char* value) {
    HKEY key = nullptr;
    if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, path, 0, KEY_READ | KEY_WOW64_64KEY, &key) != ERROR_SUCCESS) {
        return "no key";
    }
    DWORD number = 0;
    DWORD size = sizeof number;
    const LSTATUS read = RegQueryValueExA(key, value, nullptr, nullptr, reinterpret_cast<LPBYTE>(&number), &size);
    RegCloseKey(key);
    return read == ERROR_SUCCESS ? std::to_string(number) : "none";
}

bool ServiceExists() {
    const SC_HANDLE manager = OpenSCManagerA(nullptr, nullptr, SC_MANAGER_CONNECT);
    const SC_HANDLE service = OpenServiceA(manager, "RYXLIB", SERVICE_QUERY_STATUS);
    if (service != nullptr) {
        CloseServiceHandle(service);
    }
    CloseServiceHandle(manager);
    return service != nullptr;
}

int DriverFiles(const std::string& folder) {
    WIN32_FIND_DATAA entry;
    const HANDLE search = FindFirstFileA((folder + "RyxLib*").c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE) {
        return 0;
    }
    int count = 0;
    do {
        ++count;
    } while (FindNextFileA(search, &entry));
    FindClose(search);
    return count;
}

void StatePrint() {
    char temporary[MAX_PATH];
    GetTempPathA(sizeof temporary, temporary);
    std::printf("users %s, tools %s, service %s, driver files %d\n", Number("Software\\RyxDrv", "RefCount").c_str(),
                Number("Software\\RyxTool", "ToolsRefCount").c_str(), ServiceExists() ? "yes" : "no",
                DriverFiles(temporary) + DriverFiles(ProgramFolder()));
}

} // namespace

int main(int argc, char** argv) {
    Session sessions[2];
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (word == "state") {
            StatePrint();
        } else if (word.size() == 2 && (word[0] == 'a' || word[0] == 'b')) {
            Session& session = sessions[word[0] - 'a'];
            if (word[1] == '-') {
                session.End(word.substr(0, 1));
            } else if (!session.Start()) {
                std::printf("%c does not start: error %lu\n", word[0], GetLastError());
                return 1;
            }
        }
        std::fflush(stdout);
    }
    return 0;
}
