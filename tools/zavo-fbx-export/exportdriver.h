#pragma once

#include <QString>
#include <functional>

class AbstractExporterFactory;
class TakeHost;

// What happened in an export run that wrote its file.
struct ExportOutcome {
    int framesDriven = 0;     // exportFrame calls made
    int framesExported = 0;   // calls the plug-in accepted (exportFrame returned true)
    int framesAbandoned = 0;  // calls the plug-in ended with an exception (frames without pose)
    QString firstAbandonMessage;
    QString pluginLastError;  // the exporter's last error after a written file: a warning
};

// Called after every frame with the frames done and the frames in the run.
using FrameProgress = std::function<void(int done, int total)>;

// Drives one export run the way the studio does: an exporter from the factory, initialize,
// exportFrame from the first frame to the last, finalize, delete. The plug-in must have been
// initialised with `host`. A failed run cancels the exporter (nothing written, an existing
// file kept) and throws RunError saying what failed; a failed save throws the plug-in's own
// reason, and a regular file that did not appear throws RunError as well.
ExportOutcome runExport(AbstractExporterFactory& factory, TakeHost& host, const QString& output,
                        const FrameProgress& progress);
