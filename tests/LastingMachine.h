// Machines with a state that outlives their programs, and programs that end early on them.
#pragma once

#include "machine/model/SampleMachine.h"
#include "machine/windows/MachineSet.h"
#include "tests/Support.h"

#include <csignal>
#include <fcntl.h>
#include <functional>
#include <gtest/gtest.h>
#include <poll.h>
#include <string>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

constexpr int BySignal = 1000; // as Terminal tells it

// The sample machine with a state that outlives its programs.
struct LastingMachine {
    explicit LastingMachine(const std::string& lines = "") {
        mkdir(State().c_str(), 0777);
        Folder.Write("rsmb", *StandIn::SampleMachine().SmbiosTable);
        Path = Folder.Write("machine", "firmware-table RSMB = rsmb\nstate = " + State() + "\n" + lines);
    }
    std::string State() const { return Folder.Path + "/state"; }

    // The machine seen from this process.
    void Enter() const {
        StandIn::Machine machine;
        machine.StateFolder = State();
        StartOver(machine);
    }
    // What programs left: the key of the running tools stays after every run, without a value.
    std::vector<std::string> Left() const {
        Enter();
        std::vector<std::string> left = StandIn::Leftovers();
        StartOver({});
        return left;
    }

    TemporaryFolder Folder;
    std::string Path;
};

inline const std::vector<std::string> Clean{"registry key Software\\RyxTool"};

// The program with a pipe behind its standard output. `prepare` runs in the new process.
class Piped {
public:
    explicit Piped(
        const std::string& machine, const std::function<void()>& prepare = [] {}) {
        int output[2];
        int errors[2];
        if (pipe2(output, O_CLOEXEC) != 0 || pipe2(errors, O_CLOEXEC) != 0) {
            ADD_FAILURE() << "no pipe";
            return;
        }
        fcntl(output[1], F_SETPIPE_SZ, 4096); // far less than the listing
        Process = fork();
        if (Process == 0) {
            dup2(output[1], STDOUT_FILENO);
            dup2(errors[1], STDERR_FILENO);
            SignalsAsAtLogin();
            setenv("QUARRINET_MACHINE", machine.c_str(), 1);
            prepare();
            execl(QUARRINET_PROGRAM, QUARRINET_PROGRAM, "/type", nullptr);
            _exit(127);
        }
        close(output[1]);
        close(errors[1]);
        Output = output[0];
        Errors = errors[0];
    }
    ~Piped() {
        if (Process > 0) {
            kill(Process, SIGKILL);
            End();
        }
        close(Output);
        close(Errors);
    }
    Piped(const Piped&) = delete;
    Piped& operator=(const Piped&) = delete;

    bool Prints() const {
        pollfd wait{Output, POLLIN, 0};
        return poll(&wait, 1, 20000) == 1;
    }
    void ReaderLeaves() {
        close(Output);
        Output = -1;
    }
    void Signal(int number) const { kill(Process, number); }
    void Limit(__rlimit_resource resource, rlim_t limit) const {
        const rlimit both{limit, limit};
        prlimit(Process, resource, &both, nullptr);
    }
    int End() {
        int state = 0;
        waitpid(Process, &state, 0);
        Process = -1;
        return WIFEXITED(state) ? WEXITSTATUS(state) : BySignal + WTERMSIG(state);
    }
    std::string Printed() const { return Rest(Output); }
    std::string Said() const { return Rest(Errors); }

private:
    static std::string Rest(int from) {
        std::string rest;
        char piece[4096];
        for (ssize_t got; (got = read(from, piece, sizeof piece)) > 0;) {
            rest.append(piece, static_cast<std::size_t>(got));
        }
        return rest;
    }

    int Output = -1;
    int Errors = -1;
    pid_t Process = -1;
};
