#ifndef LOG_GENERATOR_H
#define LOG_GENERATOR_H

#include "byte_choices.h"

#include <QByteArray>
#include <QList>

namespace evidence {

/// A hive that was not closed cleanly, as most, and logs beside it.
struct generated_logs
{
    QByteArray hive;
    QList<QByteArray> logs;
};

/// Makes a hive and two logs of either format from a byte string: their numbers and times, which
/// mostly fit, their entries and pages, and then some damages, after which hashes and checksums are
/// mostly made right again. A used-up string makes a hive and two logs whose heads fit.
generated_logs generate_logs(byte_choices &choices);

} // namespace evidence

#endif
