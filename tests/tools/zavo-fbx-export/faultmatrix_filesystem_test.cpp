// Output paths that the file system refuses or that are not plain files. A refused export
// names the path and the operating system's reason and leaves the folder as it was, the
// earlier export included; a FIFO, a device, standard output or a symlink is written
// through, never replaced or removed.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <thread>

#include "faultcheck.h"
#include "programrun.h"

namespace {

const QByteArray earlierExport = "an earlier export";

QStringList demoArguments(const QString& output) {
    return {"--demo", "--demo-frames", "3", "--demo-props", "0", "--format", "binary", output};
}

// Runs a command to its end; true when it exits 0.
bool succeeds(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.start(program, arguments);
    return process.waitForFinished(10000) && process.exitStatus() == QProcess::NormalExit &&
           process.exitCode() == 0;
}

// A fault tried against one case folder that holds an earlier export.
class FaultCase {
public:
    FaultCase(const QTemporaryDir& root, const QString& name) : m_root(root), m_name(name) {
        QDir(root.path()).mkdir(name);
        writeFile(path("out.fbx"), earlierExport);
    }

    QString path(const QString& entry = {}) const {
        return entry.isEmpty() ? m_root.filePath(m_name) : m_root.filePath(m_name + '/' + entry);
    }

    // Exports the demo take to `output` (in the case folder unless absolute) and checks the
    // folder against `expected`; `changed` is the entry a successful export may write.
    std::string exportTo(const QString& output, const Expectation& expected,
                         const QString& changed = "out.fbx", const RunOptions& options = {}) {
        const FolderState before = folderState(path());
        const QString given = output.startsWith('/') ? output : m_name + '/' + output;
        lastRun = runProgram(m_root, demoArguments(given), options);
        return unclearOutcome(lastRun, path(), changed, before, expected);
    }
    ProgramRun lastRun;

private:
    const QTemporaryDir& m_root;
    QString m_name;
};

const Expectation refused(QStringList parts) {
    return {Outcome::Refused, std::move(parts)};
}

// Reads a FIFO to its end while the program writes it; the bytes it received.
QByteArray exportThroughFifo(const QTemporaryDir& root, const QString& fifo, ProgramRun& run) {
    QByteArray received;
    std::thread reader([&] {
        const int fd = ::open(fifo.toLocal8Bit().constData(), O_RDONLY);
        char buffer[65536];
        for (ssize_t n; fd >= 0 && (n = ::read(fd, buffer, sizeof buffer)) > 0;)
            received.append(buffer, n);
        if (fd >= 0) ::close(fd);
    });
    run = runProgram(root, demoArguments(fifo));
    // A program that never opened the FIFO leaves the reader waiting for a writer.
    if (const int fd = ::open(fifo.toLocal8Bit().constData(), O_WRONLY | O_NONBLOCK); fd >= 0)
        ::close(fd);
    reader.join();
    return received;
}

// As nobody, a folder without write permission stops the export even where root is not
// stopped by permission bits.
RunOptions asUnprivilegedUser() {
    RunOptions options;
    if (::geteuid() == 0)
        options.childSetup = [] {
            if (::setgroups(0, nullptr) != 0 || ::setgid(65534) != 0 || ::setuid(65534) != 0)
                ::_exit(125);
        };
    return options;
}

// The shell commands that mount a read-only view of the case folder "$0", and a 16 KB file
// system in its place holding an earlier export.
const QString readOnlyMount = "mount --bind \"$0\" \"$0\" && mount -o remount,bind,ro \"$0\"";
const QString fullMount =
    "mount -t tmpfs -o size=16k none \"$0\" && printf '" + earlierExport + "' > \"$0/out.fbx\"";

// Whether `mount` (run on `folder`) works in a mount namespace here.
bool canMount(const QString& folder, const QString& mount) {
    return succeeds("unshare", {"-m", "sh", "-c", mount, folder});
}

// Starts the program in a mount namespace after `mount`; `after` runs when it has ended.
RunOptions inMountNamespace(const QString& folder, const QString& mount,
                            const QString& after = {}) {
    RunOptions options;
    options.wrapper = {
        "unshare", "-m", "sh", "-c", mount + " && \"$@\"; status=$?; " + after + " exit $status",
        folder};
    return options;
}

// Empty when the run exited with 0; else its status and what it said.
std::string failure(const ProgramRun& run) {
    return run.exitStatus == 0
               ? std::string()
               : "exit " + std::to_string(run.exitStatus) + ": " + run.standardError.toStdString();
}

}  // namespace

TEST(FileSystemFaultMatrix, EachFaultEndsInAFileOrAClearRefusalThatKeepsTheFolder) {
    QTemporaryDir root;
    // Others may need to pass through to reach a case folder.
    QFile::setPermissions(root.path(), QFileDevice::ReadOwner | QFileDevice::WriteOwner |
                                           QFileDevice::ExeOwner | QFileDevice::ReadOther |
                                           QFileDevice::ExeOther);
    MatrixTally tally("file-system faults");

    FaultCase missing(root, "missing");
    tally.row("refused paths", "missing folder",
              missing.exportTo("no/such/out.fbx", refused({"no/such"})));
    FaultCase folder(root, "folder");
    QDir(folder.path()).mkdir("sub");
    writeFile(folder.path("sub/inside.txt"), "kept");
    tally.row("refused paths", "a folder as the output", folder.exportTo("sub", refused({"sub"})));
    tally.row("refused paths", "a folder with a trailing slash",
              folder.exportTo("sub/", refused({"sub"})));
    FaultCase danglingFolder(root, "dangling-folder");
    QFile::link("gone/target.fbx", danglingFolder.path("link.fbx"));
    tally.row("refused paths", "symlink into a missing folder",
              danglingFolder.exportTo("link.fbx", refused({"link.fbx"})));

    FaultCase names(root, "long");
    for (const int length : {250, 255}) {
        const QString name = QString(length - 4, 'n') + ".fbx";
        tally.row("output names", "a name of " + std::to_string(length) + " characters",
                  names.exportTo(name, {Outcome::Written}, name));
    }
    tally.row("output names", "a name of 256 characters",
              names.exportTo(QString(252, 'n') + ".fbx", refused({"nnn.fbx"})));

    FaultCase locked(root, "locked");
    QFile::setPermissions(locked.path(), QFileDevice::ReadOwner | QFileDevice::ExeOwner |
                                             QFileDevice::ReadOther | QFileDevice::ExeOther);
    tally.row("refusing file systems", "folder without write permission",
              locked.exportTo("out.fbx", refused({"out.fbx", "Permission denied"}), "out.fbx",
                              asUnprivilegedUser()));
    FaultCase immutable(root, "immutable");
    if (!succeeds("chattr", {"+i", immutable.path("out.fbx")})) {
        tally.cannotTry("immutable earlier export", "chattr +i is refused here");
    } else {
        tally.row("refusing file systems", "immutable earlier export",
                  immutable.exportTo("out.fbx", refused({"out.fbx", "Operation not permitted"})));
        succeeds("chattr", {"-i", immutable.path("out.fbx")});
    }
    FaultCase readOnly(root, "readonly");
    if (!canMount(readOnly.path(), readOnlyMount)) {
        tally.cannotTry("read-only file system", "no read-only bind mount in a namespace");
    } else {
        tally.row("refusing file systems", "read-only file system",
                  readOnly.exportTo("out.fbx", refused({"out.fbx", "Read-only file system"}),
                                    "out.fbx", inMountNamespace(readOnly.path(), readOnlyMount)));
    }
    FaultCase full(root, "full");
    if (!canMount(full.path(), fullMount)) {
        tally.cannotTry("full file system", "no tmpfs in a mount namespace");
    } else {
        // The folder's listing and the export afterwards land beside the folder.
        const ProgramRun run = runProgram(
            root, demoArguments("full/out.fbx"),
            inMountNamespace(full.path(), fullMount,
                             "ls -A \"$0\" > \"$0.list\"; cat \"$0/out.fbx\" > \"$0.after\";"));
        const QByteArray listed = fileBytes(full.path() + ".list");
        std::string problem = unclearOutcome(run, full.path(), "out.fbx", folderState(full.path()),
                                             refused({"out.fbx", "No space left on device"}));
        if (problem.empty() && listed != "out.fbx\n")
            problem = "left beside the output: " + listed.toStdString();
        if (problem.empty() && fileBytes(full.path() + ".after") != earlierExport)
            problem = "the earlier export was lost";
        tally.row("refusing file systems", "full file system (16 KB tmpfs)", problem);
    }
    // "Program Success!" only for a file that was written.
    FaultCase devFull(root, "devfull");
    std::string problem =
        devFull.exportTo("/dev/full", refused({"/dev/full", "No space left on device"}));
    if (!QFileInfo::exists("/dev/full")) problem += "; /dev/full is gone";
    if (devFull.lastRun.standardOutput.contains("Program Success!")) problem += "; said success";
    tally.row("devices", "/dev/full", problem);
    const ProgramRun null = runProgram(root, demoArguments("/dev/null"));
    tally.row("devices", "/dev/null",
              failure(null) + (QFileInfo("/dev/null").isFile() ? "; /dev/null became a file" : ""));
    // Standard output holds the FBX data alone; the plug-in's lines go to standard error.
    for (const QString output : {"-", "/dev/stdout"}) {
        const ProgramRun run = runProgram(root, demoArguments(output));
        problem = failure(run);
        if (problem.empty()) problem = unreadableExport(run.outputBytes, 3, {});
        if (!run.standardError.contains("Program Success!\n") ||
            !run.standardError.contains("\n" + output + ": 3 frames, "))
            problem += "; standard error lacks the plug-in's lines or the summary";
        if (QFileInfo::exists(root.filePath(output)))
            problem += "; wrote a file named " + output.toStdString();
        tally.row("devices", output.toStdString() + " for standard output", problem);
    }
    FaultCase fifo(root, "fifo");
    ::mkfifo(fifo.path("out.fifo").toLocal8Bit().constData(), 0600);
    const FolderState beforeFifo = folderState(fifo.path());
    ProgramRun piped;
    const QByteArray received = exportThroughFifo(root, fifo.path("out.fifo"), piped);
    problem = failure(piped);
    if (problem.empty()) problem = unreadableExport(received, 3, {});
    if (folderState(fifo.path()) != beforeFifo) problem += "; the folder changed";
    tally.row("devices", "FIFO", problem);
    FaultCase dangling(root, "dangling");
    QFile::link("target.fbx", dangling.path("link.fbx"));
    tally.row("symlinks", "dangling symlink",
              dangling.exportTo("link.fbx", {Outcome::Written}, "target.fbx"));
    FaultCase linked(root, "linked");
    QFile::link("out.fbx", linked.path("link.fbx"));
    tally.row("symlinks", "symlink to the earlier export",
              linked.exportTo("link.fbx", {Outcome::Written}, "out.fbx"));
    tally.finish();
}
