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
    QString relative(const QString& entry) const { return m_name + '/' + entry; }

    // Exports the demo take to `output` and checks the folder against `expected`; `changed`
    // is the entry a successful export may write.
    std::string exportTo(const QString& output, const Expectation& expected,
                         const QString& changed = "out.fbx", const RunOptions& options = {}) {
        const FolderState before = folderState(path());
        lastRun = runProgram(m_root, demoArguments(output), options);
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

    {
        FaultCase c(root, "missing");
        tally.row("refused paths", "missing folder",
                  c.exportTo(c.relative("no/such/out.fbx"), refused({"no/such"})));
    }
    {
        FaultCase c(root, "folder");
        QDir(c.path()).mkdir("sub");
        writeFile(c.path("sub/inside.txt"), "kept");
        tally.row("refused paths", "a folder as the output",
                  c.exportTo(c.relative("sub"), refused({"sub"})));
        tally.row("refused paths", "a folder with a trailing slash",
                  c.exportTo(c.relative("sub/"), refused({"sub"})));
    }
    {
        FaultCase c(root, "dangling-folder");
        QFile::link("gone/target.fbx", c.path("link.fbx"));
        tally.row("refused paths", "symlink into a missing folder",
                  c.exportTo(c.relative("link.fbx"), refused({"link.fbx"})));
    }
    {
        FaultCase c(root, "long");
        for (const int length : {250, 255}) {
            const QString name = QString(length - 4, 'n') + ".fbx";
            tally.row("output names", "a name of " + std::to_string(length) + " characters",
                      c.exportTo(c.relative(name), {Outcome::Written}, name));
        }
        tally.row("output names", "a name of 256 characters",
                  c.exportTo(c.relative(QString(252, 'n') + ".fbx"), refused({"nnn.fbx"})));
    }
    {
        FaultCase c(root, "locked");
        const RunOptions options = asUnprivilegedUser();
        QFile::setPermissions(c.path(), QFileDevice::ReadOwner | QFileDevice::ExeOwner |
                                            QFileDevice::ReadOther | QFileDevice::ExeOther);
        tally.row("refusing file systems", "folder without write permission",
                  c.exportTo(c.relative("out.fbx"), refused({"out.fbx", "Permission denied"}),
                             "out.fbx", options));
    }
    {
        FaultCase c(root, "immutable");
        if (!succeeds("chattr", {"+i", c.path("out.fbx")})) {
            tally.cannotTry("immutable earlier export", "chattr +i is refused here");
        } else {
            tally.row(
                "refusing file systems", "immutable earlier export",
                c.exportTo(c.relative("out.fbx"), refused({"out.fbx", "Operation not permitted"})));
            succeeds("chattr", {"-i", c.path("out.fbx")});
        }
    }
    {
        FaultCase c(root, "readonly");
        if (!canMount(c.path(), readOnlyMount)) {
            tally.cannotTry("read-only file system", "no read-only bind mount in a namespace");
        } else {
            tally.row(
                "refusing file systems", "read-only file system",
                c.exportTo(c.relative("out.fbx"), refused({"out.fbx", "Read-only file system"}),
                           "out.fbx", inMountNamespace(c.path(), readOnlyMount)));
        }
    }
    {
        FaultCase c(root, "full");
        if (!canMount(c.path(), fullMount)) {
            tally.cannotTry("full file system", "no tmpfs in a mount namespace");
        } else {
            // The folder's listing and the export afterwards land beside the folder.
            const ProgramRun run = runProgram(
                root, demoArguments(c.relative("out.fbx")),
                inMountNamespace(c.path(), fullMount,
                                 "ls -A \"$0\" > \"$0.list\"; cat \"$0/out.fbx\" > \"$0.after\";"));
            std::string problem = unclearOutcome(run, c.path(), "out.fbx", folderState(c.path()),
                                                 refused({"out.fbx", "No space left on device"}));
            if (problem.empty() && fileBytes(c.path() + ".list") != "out.fbx\n")
                problem = "left beside the output: " + fileBytes(c.path() + ".list").toStdString();
            if (problem.empty() && fileBytes(c.path() + ".after") != earlierExport)
                problem = "the earlier export was lost";
            tally.row("refusing file systems", "full file system (16 KB tmpfs)", problem);
        }
    }
    {
        // "Program Success!" only for a file that was written.
        FaultCase c(root, "devfull");
        std::string problem =
            c.exportTo("/dev/full", refused({"/dev/full", "No space left on device"}));
        if (!QFileInfo::exists("/dev/full")) problem += "; /dev/full is gone";
        if (c.lastRun.standardOutput.contains("Program Success!")) problem += "; said success";
        tally.row("devices", "/dev/full", problem);
    }
    {
        const ProgramRun run = runProgram(root, demoArguments("/dev/null"));
        std::string problem = failure(run);
        if (QFileInfo("/dev/null").isFile()) problem += "/dev/null became a file";
        tally.row("devices", "/dev/null", problem);
    }
    // Standard output holds the FBX data alone; the plug-in's lines go to standard error.
    for (const QString output : {"-", "/dev/stdout"}) {
        const ProgramRun run = runProgram(root, demoArguments(output));
        std::string problem = failure(run);
        if (problem.empty()) problem = unreadableExport(run.outputBytes, 3, {});
        if (!run.standardError.contains("Program Success!\n") ||
            !run.standardError.contains("\n" + output + ": 3 frames, "))
            problem += "; standard error lacks the plug-in's lines or the summary";
        if (QFileInfo::exists(root.filePath(output)))
            problem += "; wrote a file named " + output.toStdString();
        tally.row("devices", output.toStdString() + " for standard output", problem);
    }
    {
        FaultCase c(root, "fifo");
        ::mkfifo(c.path("out.fifo").toLocal8Bit().constData(), 0600);
        const FolderState before = folderState(c.path());
        ProgramRun run;
        const QByteArray received = exportThroughFifo(root, c.path("out.fifo"), run);
        std::string problem = failure(run);
        if (problem.empty()) problem = unreadableExport(received, 3, {});
        if (folderState(c.path()) != before) problem += "; the folder changed";
        tally.row("devices", "FIFO", problem);
    }
    {
        FaultCase c(root, "dangling");
        QFile::link("target.fbx", c.path("link.fbx"));
        tally.row("symlinks", "dangling symlink",
                  c.exportTo(c.relative("link.fbx"), {Outcome::Written}, "target.fbx"));
    }
    {
        FaultCase c(root, "linked");
        QFile::link("out.fbx", c.path("link.fbx"));
        tally.row("symlinks", "symlink to the earlier export",
                  c.exportTo(c.relative("link.fbx"), {Outcome::Written}, "out.fbx"));
    }
    tally.finish();
}
