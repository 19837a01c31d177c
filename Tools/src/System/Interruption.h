#pragma once

namespace Tools {

/// How the program stops on SIGINT (a person) and SIGTERM (a render farm).
///
/// The first signal only sets a flag: the frame loop starts no further frame, completes those in flight and ends. The
/// second one stops at once: it removes the temporary files and ends the process with the exit status for that signal.
/// So no partial file is left in either case. But a repeated SIGTERM counts as the first one: a farm sends it to every
/// process of a task, and the task's shell hands it on. SIGXFSZ and SIGPIPE are ignored: what caused them is then an
/// ordinary error of a write.
class Interruption {
public:
    /// Installs the four signals' handlers; once, at the start of the program.
    static void install();

    /// Installs them again; does nothing before install. An OpenCL driver on LLVM installs handlers of its own when it
    /// first builds a kernel. They hand a signal on to ours, but until then a second one ends the process: call this
    /// after the first use of a device. Any thread, any number of times.
    static void takeBack();

    /// Whether a signal has come; any thread.
    static bool requested();

    /// The status with which a shell's commands end on the signal that came first: 128 and its number.
    static int exitStatus();
};

} // namespace Tools
