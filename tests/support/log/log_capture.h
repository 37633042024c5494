#ifndef LOG_CAPTURE_H
#define LOG_CAPTURE_H

#include "host_context_records.h"
#include "run_context_backup.h"

#include <QString>
#include <QStringList>
#include <QTemporaryDir>

namespace test_support {

/// Switches the debug log on and directs it to a temporary file for as long as it lives; then the
/// run context is what it was before.
class log_capture
{
public:
    /// `engine_type` is the host edition that the lines shall name.
    explicit log_capture(int engine_type = 0);

    /// The record that gives the same settings to an object that resets the run context itself.
    struct_GLOBAL_COMMON_ARKEN_AND_ARTIFACT_general_info general_info() const;

    /// Every line so far without its time stamp, e.g.
    /// "[ARKEN_DESK][Artifacts Extraction][registry::walk]:-- [walk] - START". What does not begin
    /// with a valid time stamp belongs to the line before, behind a line feed.
    QStringList lines() const;

    /// The messages of the lines alone: what follows the first "]:-- ".
    QStringList messages() const;

    /// Forgets the lines so far.
    void clear() const;

    /// The file that the log is written to.
    QString path() const;

private:
    run_context_backup m_backup;
    QTemporaryDir m_folder;
};

} // namespace test_support

#endif
