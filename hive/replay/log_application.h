#ifndef LOG_APPLICATION_H
#define LOG_APPLICATION_H

#include "hive_image.h"
#include "log_head.h"
#include "log_report.h"

#include <QByteArray>

/// Applies logs to a hive, one after the other.
class log_application
{
public:
    explicit log_application(hive_image image) : m_image(std::move(image)) {}

    /// Applies what is sound of the log with this head and these bytes, and notes in the report
    /// what that was. False when it was nothing.
    bool apply(const log_head &head, QByteArrayView bytes, log_report &report);

    /// The hive with the base block of the log that was applied last; as it came, if none was.
    QByteArray result() &&;

private:
    void apply_new(const log_head &head, QByteArrayView bytes, log_report &report);
    void apply_old(const log_head &head, QByteArrayView bytes, log_report &report);
    log_flaw bring_in(const page_batch &batch, log_report &report);

    hive_image m_image;
    QByteArray m_fields; ///< of the log that was applied last
    quint32 m_flags = 0;
    quint32 m_sequence = 0;
};

#endif
