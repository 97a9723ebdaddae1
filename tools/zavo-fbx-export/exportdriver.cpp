#include "exportdriver.h"

#include <zavo/abstractexporter.h>
#include <zavo/abstractexporterfactory.h>
#include <QFile>
#include <memory>

#include "outputfile.h"
#include "runerror.h"
#include "takehost.h"

namespace {

[[noreturn]] void fail(const QString& output, const QString& what) {
    throw RunError((output + QStringLiteral(": ") + what).toStdString());
}

QString lastLoggedText(const TakeHost& host) {
    return host.logEntries().empty() ? QString() : host.logEntries().back().text;
}

// Runs one call into the exporter; an exception leaves the run with its text.
template <typename Call>
bool guarded(Call&& call, QString& error) {
    try {
        return call();
    } catch (const std::exception& exception) {
        error = QString::fromUtf8(exception.what());
    } catch (...) {
        error = QStringLiteral("unknown exception");
    }
    return false;
}

// Ends a failed run: the exporter releases its scene without writing anything.
[[noreturn]] void cancelRun(AbstractExporter& exporter, const QString& output,
                            const QString& what) {
    QString ignored;
    guarded([&] { return exporter.finalize(true); }, ignored);
    fail(output, what);
}

void driveFrames(AbstractExporter& exporter, const TakeHost& host, const QString& output,
                 const FrameProgress& progress, ExportOutcome& outcome) {
    const int first = host.firstFrame();
    const int count = host.frameCount();
    for (int i = 0; i < count; ++i) {
        QString error;
        const int frame = first + i;
        const bool ok = guarded([&] { return exporter.exportFrame(frame); }, error);
        ++outcome.framesDriven;
        if (ok) ++outcome.framesExported;
        if (!ok && error.isEmpty())
            cancelRun(exporter, output,
                      QStringLiteral("frame %1: %2").arg(frame).arg(exporter.lastError()));
        if (!ok) {
            // The studio drops a frame the plug-in cannot take (no pose for it) and goes on.
            if (outcome.framesAbandoned++ == 0)
                outcome.firstAbandonMessage = QStringLiteral("frame %1: %2").arg(frame).arg(error);
        }
        if (progress) progress(i + 1, count);
    }
    if (outcome.framesAbandoned == count)
        cancelRun(
            exporter, output,
            QStringLiteral("no frame could be exported (%1)").arg(outcome.firstAbandonMessage));
}

}  // namespace

ExportOutcome runExport(AbstractExporterFactory& factory, TakeHost& host, const QString& output,
                        const FrameProgress& progress) {
    const FileSnapshot before = FileSnapshot::of(output);
    std::unique_ptr<AbstractExporter> exporter(factory.doCreate(host));
    if (!exporter) {
        const QString reason = lastLoggedText(host);
        fail(output, QStringLiteral("the plug-in made no exporter") +
                         (reason.isEmpty() ? QString() : QStringLiteral(": ") + reason));
    }
    QString error;
    if (!guarded([&] { return exporter->initialize(output); }, error)) {
        if (error.isEmpty()) error = exporter->lastError();
        if (error.isEmpty()) error = QStringLiteral("the exporter could not start");
        cancelRun(*exporter, output, QStringLiteral("export failed: ") + error);
    }
    ExportOutcome outcome;
    driveFrames(*exporter, host, output, progress, outcome);
    if (!guarded([&] { return exporter->finalize(false); }, error)) {
        // The plug-in's reason names the file and what the system said.
        if (error.isEmpty()) error = exporter->lastError();
        if (error.isEmpty()) fail(output, QStringLiteral("file not written"));
        throw RunError(error.toStdString());
    }
    outcome.pluginLastError = exporter->lastError();
    exporter.reset();
    const FileSnapshot after = FileSnapshot::of(output);
    // A pipe or a device takes the data without leaving anything to check.
    if (after.exists && !after.regular) return outcome;
    if (!after.exists || after.sameFileAs(before))
        fail(output, QStringLiteral("file not written (see the FBX writer's messages)"));
    if (after.size == 0) {
        QFile::remove(output);
        fail(output, QStringLiteral("file not written (the FBX writer left it empty)"));
    }
    return outcome;
}
