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
        const ProgramRun run = runProgram(m_root, demoArguments(output), options);
        return unclearOutcome(run, path(), changed, before, expected);
    }

private:
    const QTemporaryDir& m_root;
    QString m_name;
};

const Expectation refused(QStringList parts) {
    return {Outcome::Refused, std::move(parts)};
}

std::string pathIsA(const QString& path, bool (QFileInfo::*kind)() const, const char* what) {
    return (QFileInfo(path).*kind)() ? std::string()
                                     : path.toStdString() + " is no " + what + " now";
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

// Starts the program in a mount namespace where the case folder is mounted read-only.
RunOptions onReadOnlyMount(const QString& folder) {
    RunOptions options;
    options.wrapper = {"unshare",
                       "-m",
                       "sh",
                       "-c",
                       "mount --bind \"$0\" \"$0\" && mount -o remount,bind,ro \"$0\" && "
                       "exec \"$@\"",
                       folder};
    return options;
}

// Starts the program where the case folder is a 16 KB file system, holding an earlier export;
// the folder's listing and that file afterwards land beside the folder.
RunOptions onFullFileSystem(const QString& folder) {
    RunOptions options;
    options.wrapper = {"unshare",
                       "-m",
                       "sh",
                       "-c",
                       "mount -t tmpfs -o size=16k none \"$0\" && printf '" + earlierExport +
                           "' > \"$0/out.fbx\" && \"$@\"; status=$?; ls -A \"$0\" > \"$0.list\"; "
                           "cat \"$0/out.fbx\" > \"$0.after\"; exit $status",
                       folder};
    return options;
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
        const QString longest = QString(251, 'n') + ".fbx";
        tally.row("output names", "a name of 250 characters",
                  c.exportTo(c.relative(QString(246, 'n') + ".fbx"), {Outcome::Written},
                             QString(246, 'n') + ".fbx"));
        tally.row("output names", "a name of 255 characters",
                  c.exportTo(c.relative(longest), {Outcome::Written}, longest));
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
            tally.row("refusing file systems", "immutable earlier export",
                      c.exportTo(c.relative("out.fbx"), refused({"out.fbx"})));
            succeeds("chattr", {"-i", c.path("out.fbx")});
        }
    }
    {
        FaultCase c(root, "readonly");
        if (!succeeds("unshare", {"-m", "sh", "-c",
                                  "mount --bind \"$0\" \"$0\" && mount -o remount,bind,ro \"$0\"",
                                  c.path()})) {
            tally.cannotTry("read-only file system", "no read-only bind mount in a namespace");
        } else {
            tally.row(
                "refusing file systems", "read-only file system",
                c.exportTo(c.relative("out.fbx"), refused({"out.fbx", "Read-only file system"}),
                           "out.fbx", onReadOnlyMount(c.path())));
        }
    }
    {
        FaultCase c(root, "full");
        if (!succeeds("unshare",
                      {"-m", "sh", "-c", "mount -t tmpfs -o size=16k none \"$0\"", c.path()})) {
            tally.cannotTry("full file system", "no tmpfs in a mount namespace");
        } else {
            const ProgramRun run =
                runProgram(root, demoArguments(c.relative("out.fbx")), onFullFileSystem(c.path()));
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
        FaultCase c(root, "devfull");
        tally.row("devices", "/dev/full",
                  c.exportTo("/dev/full", refused({"/dev/full", "No space left on device"})) +
                      pathIsA("/dev/full", &QFileInfo::exists, "device"));
    }
    {
        FaultCase c(root, "devnull");
        const ProgramRun run = runProgram(root, demoArguments("/dev/null"));
        std::string problem = run.exitStatus == 0 ? std::string()
                                                  : "exit " + std::to_string(run.exitStatus) +
                                                        ": " + run.standardError.toStdString();
        if (QFileInfo("/dev/null").isFile()) problem += "/dev/null became a file";
        tally.row("devices", "/dev/null", problem);
    }
    {
        FaultCase c(root, "stdout");
        QStringList arguments = demoArguments("-");
        arguments.prepend("--quiet");
        const ProgramRun run = runProgram(root, arguments);
        std::string problem =
            run.exitStatus == 0 && run.standardError.isEmpty()
                ? unreadableExport(run.outputBytes, 3, {})
                : "exit " + std::to_string(run.exitStatus) + ": " + run.standardError.toStdString();
        if (QFileInfo::exists(root.filePath("-"))) problem += "; wrote a file named -";
        tally.row("devices", "\"-\" for standard output", problem);
    }
    {
        FaultCase c(root, "fifo");
        ::mkfifo(c.path("out.fifo").toLocal8Bit().constData(), 0600);
        const FolderState before = folderState(c.path());
        ProgramRun run;
        const QByteArray received = exportThroughFifo(root, c.path("out.fifo"), run);
        std::string problem = run.exitStatus == 0 ? unreadableExport(received, 3, {})
                                                  : "exit " + std::to_string(run.exitStatus) +
                                                        ": " + run.standardError.toStdString();
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
