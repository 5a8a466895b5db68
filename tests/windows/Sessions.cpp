// Runs the program that lies beside it, whatever its name, in up to two sessions at once on one console, and says what
// the tools have left in the machine.
//
//     sessions WORD...
//     a+ b+      starts a session and waits until it prints, or ends; it then stands still, for nobody reads on
//     a- b-      reads a session's output to its end, into the file a.out or b.out, and prints its exit code
//     together=N starts N sessions at once, up to 4, and waits until all have ended; their output goes to a.out, b.out
//                and so on, and their exit codes are printed
//     interrupt  presses Ctrl+C on the console of all sessions
//     lay=FILE   lays a file of somebody else's into the temporary folder
//     hold=FILE  the same, and lets nobody delete it
//     NAME=VALUE sets a variable of the environment that sessions start in; nothing behind the sign takes it away
//     state      prints the users of the driver, the running tools, whether the service exists, the driver files
#include <windows.h>

#include <cstdio>
#include <string>

namespace {

constexpr DWORD InterruptMilliseconds = 500;

std::wstring OwnPath() {
    wchar_t path[MAX_PATH];
    const DWORD length = GetModuleFileNameW(nullptr, path, MAX_PATH);
    return std::wstring(path, length);
}

std::wstring OwnFolder() {
    const std::wstring path = OwnPath();
    return path.substr(0, path.rfind(L'\\') + 1);
}

std::wstring TemporaryFolder() {
    wchar_t path[MAX_PATH];
    return std::wstring(path, GetTempPathW(MAX_PATH, path));
}

// Calls take(name) for each file of the folder that matches.
template <typename Take> void FilesFind(const std::wstring& folder, const wchar_t* pattern, Take take) {
    WIN32_FIND_DATAW entry;
    const HANDLE search = FindFirstFileW((folder + pattern).c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE) {
        return;
    }
    do {
        take(std::wstring(entry.cFileName));
    } while (FindNextFileW(search, &entry));
    FindClose(search);
}

std::wstring ProgramPath() {
    std::wstring program;
    FilesFind(OwnFolder(), L"*.exe", [&program](const std::wstring& name) {
        if (lstrcmpiW((OwnFolder() + name).c_str(), OwnPath().c_str()) != 0) {
            program = OwnFolder() + name;
        }
    });
    return program;
}

constexpr int SessionLimit = 4;

HANDLE ProgramStart(HANDLE output) {
    // The console's keyboard, on which nobody types.
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    const HANDLE keys = CreateFileW(L"CONIN$", GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                    &inherited, OPEN_EXISTING, 0, nullptr);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdInput = keys;
    startup.hStdOutput = output;
    startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
    std::wstring command = L'"' + ProgramPath() + L"\" /eps /type";
    PROCESS_INFORMATION started{};
    const bool runs =
        CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup, &started) != 0;
    CloseHandle(keys);
    CloseHandle(output);
    if (runs) {
        CloseHandle(started.hThread);
    }
    return runs ? started.hProcess : nullptr;
}

// Waits for the end of a process, and prints its exit code.
void ProgramEnd(HANDLE process, const std::string& name) {
    WaitForSingleObject(process, INFINITE);
    DWORD code = 0;
    GetExitCodeProcess(process, &code);
    CloseHandle(process);
    std::printf("%s ended with %lu\n", name.c_str(), code);
}

std::string SessionName(int number) {
    return {static_cast<char>('a' + number)};
}

void Together(int count) {
    HANDLE processes[SessionLimit]{};
    SECURITY_ATTRIBUTES inherited{sizeof inherited, nullptr, TRUE};
    for (int i = 0; i < count && i < SessionLimit; ++i) {
        processes[i] = ProgramStart(CreateFileA((SessionName(i) + ".out").c_str(), GENERIC_WRITE, FILE_SHARE_READ,
                                                &inherited, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    }
    for (int i = 0; i < count && i < SessionLimit; ++i) {
        ProgramEnd(processes[i], SessionName(i));
    }
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
        Process = ProgramStart(write);
        if (Process == nullptr) {
            return false;
        }
        char first;
        Read(&first, 1);
        return true;
    }

    void End(const std::string& name) {
        char piece[4096];
        while (Read(piece, sizeof piece)) {
        }
        ProgramEnd(Process, name);
        if (std::FILE* const file = std::fopen((name + ".out").c_str(), "wb")) {
            std::fwrite(Shown.data(), 1, Shown.size(), file);
            std::fclose(file);
        }
        CloseHandle(Output);
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

int DriverFiles(const std::wstring& folder) {
    int count = 0;
    FilesFind(folder, L"RyxLib*", [&count](const std::wstring&) { ++count; });
    return count;
}

void StatePrint() {
    std::printf("users %s, tools %s, service %s, driver files %d\n", Number("Software\\RyxDrv", "RefCount").c_str(),
                Number("Software\\RyxTool", "ToolsRefCount").c_str(), ServiceExists() ? "yes" : "no",
                DriverFiles(TemporaryFolder()) + DriverFiles(OwnFolder()));
}

// Presses Ctrl+C, and gives the sessions the time to take notice. The handler is this process's own; were the key
// ignored instead, then sessions that start later would ignore it too.
void Interrupt() {
    SetConsoleCtrlHandler([](DWORD) WINAPI -> BOOL { return TRUE; }, TRUE);
    if (!GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0)) {
        std::printf("no Ctrl+C: error %lu\n", GetLastError());
    }
    Sleep(InterruptMilliseconds);
}

void FileLay(const std::string& name, bool hold) {
    const std::wstring path = TemporaryFolder() + std::wstring(name.begin(), name.end());
    const HANDLE file = CreateFileW(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    DWORD written = 0;
    if (file == INVALID_HANDLE_VALUE || !WriteFile(file, "not ours", 8, &written, nullptr)) {
        std::printf("%s can't be laid: error %lu\n", name.c_str(), GetLastError());
    }
    if (!hold) {
        CloseHandle(file);
    }
}

} // namespace

int main(int argc, char** argv) {
    // A console that takes Ctrl+C for all sessions and nobody else.
    FreeConsole();
    AllocConsole();
    Session sessions[2];
    for (int i = 1; i < argc; ++i) {
        const std::string word = argv[i];
        if (word == "state") {
            StatePrint();
        } else if (word.starts_with("together=")) {
            Together(word.back() - '0');
        } else if (word == "interrupt") {
            Interrupt();
        } else if (word.starts_with("lay=") || word.starts_with("hold=")) {
            FileLay(word.substr(word.find('=') + 1), word[0] == 'h');
        } else if (const std::size_t sign = word.find('='); sign != word.npos) {
            const std::string value = word.substr(sign + 1);
            SetEnvironmentVariableA(word.substr(0, sign).c_str(), value.empty() ? nullptr : value.c_str());
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
