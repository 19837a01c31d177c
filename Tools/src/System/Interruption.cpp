#include "System/Interruption.h"

#include <unistd.h>

#include <atomic>
#include <csignal>

#include "System/AtomicFile.h"

namespace Tools {
namespace {

constinit std::atomic<int> receivedSignal{0};
constinit std::atomic<bool> isInstalled{false};

int exitStatusOf(int signal) { return 128 + signal; }

void onSignal(int signal) {
    int expected = 0;
    if (receivedSignal.compare_exchange_strong(expected, signal)) return;
    if (expected == SIGTERM && signal == SIGTERM) return;
    AtomicFile::removeAllNow();
    _exit(exitStatusOf(signal));
}

} // namespace

void Interruption::install() {
    isInstalled = true;
    // Some daemons ignore it, and so what they start: nobody is told then how a process has ended.
    std::signal(SIGCHLD, SIG_DFL);
    takeBack();
}

void Interruption::takeBack() {
    if (!isInstalled) return;
    struct sigaction action = {};
    action.sa_handler = onSignal;
    action.sa_flags = SA_RESTART; // reads and writes of the frames in flight go on
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    action.sa_handler = SIG_IGN;
    sigaction(SIGXFSZ, &action, nullptr);
    sigaction(SIGPIPE, &action, nullptr);
}

bool Interruption::requested() { return receivedSignal != 0; }

int Interruption::exitStatus() { return exitStatusOf(receivedSignal); }

} // namespace Tools
