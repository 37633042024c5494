#ifndef LOG_HASH_H
#define LOG_HASH_H

#include <QByteArray>

namespace evidence {

/// The hash of a log entry's bytes, of which there are a multiple of 4: Marvin32 with the seed that
/// Windows uses. Written apart from the reader's hash, so that a mistake in one shows.
quint64 log_hash(const QByteArray &bytes);

} // namespace evidence

#endif
