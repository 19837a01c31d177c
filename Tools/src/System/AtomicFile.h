#pragma once

#include <string>

namespace Tools {

/// A file that appears under its name complete or not at all.
///
/// The writer fills `temporaryPath()`, a hidden file in the same folder, `.<stem>.<host>.<pid>.tmp.<extension>`, which
/// is there already and empty:
/// hidden, so that no scan for frames finds it; with its extension, since writers choose the format by it; with host
/// and process, so that two machines that make the same frame do not write into one file (the last one wins, whole).
/// `commit` flushes it to the disk, renames it and flushes the folder. Without a commit, by an exception or an
/// interruption, the destructor removes it; `removeAllNow` removes every open one when there is no time for that. A
/// writer should open the file without making it (std::ios::in | std::ios::out, WriteOptions::makesFile): then nothing
/// recreates one that was removed.
///
/// Each object belongs to one thread; different objects are independent.
class AtomicFile {
public:
    /// Makes missing parent folders of a file that is to be written later. Throws Failure (Output) if that fails, or if
    /// no file may be made in its folder.
    static void checkFolderOf(const std::string& path);

    /// Makes missing parent folders and the temporary file. Throws Failure (Output) if that fails, if a folder has the
    /// file's name already, or once `removeAllNow` has been called.
    explicit AtomicFile(const std::string& path);
    ~AtomicFile();
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;

    const std::string& path() const { return m_path; }
    const std::string& temporaryPath() const { return m_temporaryPath; }

    /// Call after the writer has closed the temporary file without an error, once. Throws Failure (Output) if a step
    /// fails, or if the file is empty; nothing new is then under the final name, and the temporary file is removed.
    void commit();

    /// Removes the temporary files of all objects of the process, permanently: none is created afterwards, by any
    /// thread, and a later commit fails. Only for a signal handler that ends the process: safe there. Waits, at most a
    /// second, for files that are being made at that moment.
    static void removeAllNow() noexcept;

    /// Removes temporary files in a folder that processes of this machine left behind when they were killed: the
    /// process is gone and the file has not been touched for an hour. Errors are ignored.
    static void removeAbandoned(const std::string& folder);

private:
    std::string m_path;
    std::string m_folder;
    std::string m_temporaryPath;
    int m_slot; ///< where removeAllNow finds the path; -1: no room was left
    bool m_isCommitted = false;
};

/// Writes a text file whole or not at all. Throws Failure (Output).
void writeTextFile(const std::string& path, const std::string& text);

/// Throws Failure (WrongUse) if `output` is `input`, also by another name: a result must not replace what it is made
/// of.
void refuseToReplace(const std::string& input, const std::string& output);

} // namespace Tools
