#ifndef FILE_HASHES_H
#define FILE_HASHES_H

#include <QString>
#include <QThreadPool>

#include <atomic>
#include <functional>
#include <future>
#include <vector>

#include "read_files.h"

/// Computes the SHA-256 of files in threads of its own, so that a run goes on meanwhile.
class file_hashes
{
public:
    /// What of a file is hashed: read_file::before or read_file::after.
    using look = file_look read_file::*;

    /// Waits for no file: those that have not been hashed to their end have no hash.
    ~file_hashes();

    file_hashes() = default;
    Q_DISABLE_COPY_MOVE(file_hashes)

    /// Begins to hash the files that are read as hives, in their order and `threads` at a time.
    /// Those that the look could not open are left out. Finish what was begun before.
    void begin(const source_volume &volume, const QList<read_file> &files, look of, int threads);

    /// Waits for what was begun last, and adds the hashes to the looks of the same files. Once
    /// `is_cancelled` returns true, files that are not hashed to their end, and all later ones,
    /// stay without a hash. `on_long_wait` is called once if the wait takes seconds.
    void finish(
        QList<read_file> &files, const std::function<bool()> &is_cancelled,
        const std::function<void()> &on_long_wait = [] {});

    /// Whether some files have no hash because that was cancelled.
    bool is_given_up() const { return m_is_given_up; }

    /// Files that were hashed, each time counted.
    int count() const { return m_count; }

    /// How long the threads were at work, all together, in seconds.
    double seconds() const { return double(m_busy_ns) / 1e9; }

    /// How long finish() has waited, in seconds.
    double seconds_waited() const { return double(m_waited_ns) / 1e9; }

private:
    struct begun_hash
    {
        qsizetype file;
        std::future<QString> sha256;
    };

    QString hash(const QString &path);

    std::vector<begun_hash> m_begun;
    look m_look = nullptr;
    int m_count = 0;
    qint64 m_waited_ns = 0;
    std::atomic<qint64> m_busy_ns = 0;
    std::atomic<bool> m_is_cancelled = false;
    bool m_is_given_up = false;
    QThreadPool m_threads; // the last member: its threads use the others
};

#endif
