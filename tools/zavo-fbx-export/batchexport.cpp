#include "batchexport.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <map>
#include <utility>

#include "outputfile.h"
#include "progressbar.h"
#include "runsummary.h"

extern char** environ;

namespace {

constexpr int StoppingSignals[] = {SIGINT, SIGTERM, SIGHUP};

volatile std::sig_atomic_t g_signal = 0;

void noteSignal(int signal) {
    g_signal = signal;
}

// One input of the batch and the run converting it.
struct Job {
    std::string input;
    std::string output;
    pid_t pid = -1;
    int pipes[2] = {-1, -1};  // the run's standard output and standard error
    std::string texts[2];
    int waitStatus = 0;
    std::string failure;  // why the run could not be started
};

void printError(const std::string& message) {
    std::fflush(stdout);
    std::fprintf(stderr, "zavo-fbx-export: %s\n", message.c_str());
}

// Signals stop the batch: no new run starts, the runs under way get the same signal.
void catchStoppingSignals() {
    struct sigaction action {};
    action.sa_handler = noteSignal;
    sigemptyset(&action.sa_mask);
    for (const int signal : StoppingSignals) sigaction(signal, &action, nullptr);
}

// Starts this program on the job's input and output with the batch's own options.
void start(Job& job, const CommandLine& command) {
    const std::string program = QCoreApplication::applicationFilePath().toStdString();
    std::vector<std::string> arguments{program};
    arguments.insert(arguments.end(), command.runOptions.begin(), command.runOptions.end());
    arguments.insert(arguments.end(), {"--", job.input, job.output});
    std::vector<char*> argv;
    for (std::string& argument : arguments) argv.push_back(argument.data());
    argv.push_back(nullptr);

    int ends[2][2];
    if (::pipe2(ends[0], O_CLOEXEC) != 0 || ::pipe2(ends[1], O_CLOEXEC) != 0) {
        job.failure = std::string("cannot start the conversion: ") + std::strerror(errno);
        return;
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[0][1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, ends[1][1], STDERR_FILENO);
    const int error =
        posix_spawn(&job.pid, program.c_str(), &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    for (int stream = 0; stream < 2; ++stream) {
        ::close(ends[stream][1]);
        job.pipes[stream] = ends[stream][0];
    }
    if (error == 0) return;
    for (int& pipe : job.pipes) ::close(std::exchange(pipe, -1));
    job.pid = -1;
    job.failure = std::string("cannot start the conversion: ") + std::strerror(error);
}

bool collecting(const Job& job) {
    return job.pipes[0] >= 0 || job.pipes[1] >= 0;
}

// Waits a little for output of the running jobs and keeps what arrives.
void collectOutput(std::vector<Job*>& running) {
    std::vector<pollfd> polled;
    std::vector<std::pair<Job*, int>> owners;
    for (Job* job : running)
        for (int stream = 0; stream < 2; ++stream)
            if (job->pipes[stream] >= 0) {
                polled.push_back({job->pipes[stream], POLLIN, 0});
                owners.emplace_back(job, stream);
            }
    // The timeout only bounds how late a signal caught just before poll is seen.
    if (::poll(polled.data(), polled.size(), 200) <= 0) return;
    char buffer[65536];
    for (size_t i = 0; i < polled.size(); ++i) {
        if (polled[i].revents == 0) continue;
        auto [job, stream] = owners[i];
        const ssize_t count = ::read(polled[i].fd, buffer, sizeof buffer);
        if (count > 0) {
            job->texts[stream].append(buffer, static_cast<size_t>(count));
        } else if (count == 0 || errno != EINTR) {
            ::close(polled[i].fd);
            job->pipes[stream] = -1;
        }
    }
}

// Tallies of the batch for its closing line.
struct BatchTotal {
    int written = 0;
    int failed = 0;
    int64_t bytes = 0;
};

// Passes on what the finished run printed, or says why it ended without a word.
void report(const Job& job, BatchTotal& total) {
    std::fwrite(job.texts[0].data(), 1, job.texts[0].size(), stdout);
    std::fflush(stdout);
    std::fwrite(job.texts[1].data(), 1, job.texts[1].size(), stderr);
    const bool written =
        job.failure.empty() && WIFEXITED(job.waitStatus) && WEXITSTATUS(job.waitStatus) == 0;
    if (!job.failure.empty())
        printError(job.output + ": " + job.failure);
    else if (WIFSIGNALED(job.waitStatus) && !g_signal)
        printError(job.output + ": the conversion ended by signal " +
                   std::to_string(WTERMSIG(job.waitStatus)));
    if (written) {
        ++total.written;
        total.bytes += FileSnapshot::of(QString::fromStdString(job.output)).size;
    } else {
        ++total.failed;
    }
    std::fflush(stderr);
}

// Inputs whose outputs would overwrite each other, or empty.
std::string clashingInputs(const std::vector<Job>& jobs) {
    std::map<std::string, const Job*> byOutput;
    for (const Job& job : jobs) {
        const auto [other, added] = byOutput.emplace(job.output, &job);
        if (!added)
            return other->second->input + " and " + job.input + " would both be written to " +
                   job.output;
    }
    return {};
}

void printTotal(const BatchTotal& total, int inputs, double seconds) {
    std::printf("%d of %d files written, %d failed, %s, %s s\n", total.written, inputs,
                total.failed, formatFileSize(total.bytes).toLocal8Bit().constData(),
                QString::number(seconds, 'f', 2).toLocal8Bit().constData());
}

}  // namespace

std::string batchOutputPath(const std::string& folder, const std::string& input) {
    const QString name = QFileInfo(QString::fromStdString(input)).completeBaseName();
    return QDir(QString::fromStdString(folder))
        .filePath(name + QStringLiteral(".fbx"))
        .toStdString();
}

int runBatchCommand(const CommandLine& command) {
    QElapsedTimer timer;
    timer.start();
    if (!QFileInfo(QString::fromStdString(command.outputDir)).isDir()) {
        printError(command.outputDir + ": no such folder");
        return 1;
    }
    std::vector<Job> jobs;
    for (const std::string& input : command.inputs) {
        Job& job = jobs.emplace_back();
        job.input = input;
        job.output = batchOutputPath(command.outputDir, input);
    }
    if (const std::string clash = clashingInputs(jobs); !clash.empty()) {
        printError(clash);
        return 2;
    }

    catchStoppingSignals();
    ProgressBar bar(stderr, !command.quiet, "file");
    BatchTotal total;
    std::vector<Job*> running;
    size_t next = 0;
    int forwarded = 0;
    // After a signal no run starts; the loop ends when the runs under way have.
    while (!running.empty() || (next < jobs.size() && !g_signal)) {
        while (!g_signal && next < jobs.size() && running.size() < size_t(command.jobs)) {
            Job& job = jobs[next++];
            start(job, command);
            running.push_back(&job);
        }
        if (g_signal && forwarded != g_signal) {
            forwarded = g_signal;
            for (Job* job : running)
                if (job->pid > 0) ::kill(job->pid, forwarded);
        }
        collectOutput(running);
        for (auto job = running.begin(); job != running.end();) {
            if (collecting(**job)) {
                ++job;
                continue;
            }
            if ((*job)->pid > 0)
                while (::waitpid((*job)->pid, &(*job)->waitStatus, 0) < 0 && errno == EINTR) {
                }
            bar.finish();
            report(**job, total);
            job = running.erase(job);
            bar.update(total.written + total.failed, static_cast<int>(jobs.size()));
        }
    }
    bar.finish();
    if (g_signal) return 128 + g_signal;
    if (!command.quiet)
        printTotal(total, static_cast<int>(jobs.size()),
                   static_cast<double>(timer.nsecsElapsed()) / 1e9);
    return total.failed > 0 ? 1 : 0;
}
