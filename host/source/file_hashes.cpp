#include "file_hashes.h"

#include <QElapsedTimer>
#include <QFile>

#include <chrono>
#include <memory>

#include "sha256.h"

file_hashes::~file_hashes()
{
    m_is_cancelled = true;
    m_threads.waitForDone();
}

void file_hashes::begin(const source_volume &volume, const QList<read_file> &files, look of,
                        int threads)
{
    m_look = of;
    m_begun.clear();
    m_threads.setMaxThreadCount(threads);
    for (qsizetype file = 0; file < files.size(); ++file) {
        if (!(files.at(file).*of).failure.isEmpty() || !files.at(file).is_read())
            continue;
        const QString path = volume.root() + files.at(file).path;
        const auto task =
            std::make_shared<std::packaged_task<QString()>>([this, path] { return hash(path); });
        m_begun.push_back({file, task->get_future()});
        m_threads.start([task] { (*task)(); });
    }
}

void file_hashes::finish(QList<read_file> &files, const std::function<bool()> &is_cancelled,
                         const std::function<void()> &on_long_wait)
{
    constexpr auto between_questions = std::chrono::milliseconds(20);
    constexpr qint64 long_wait_ms = 2000;
    bool is_wait_told = false;
    QElapsedTimer waited;
    waited.start();
    m_is_cancelled = m_is_cancelled || is_cancelled();
    for (begun_hash &begun : m_begun) {
        while (begun.sha256.wait_for(between_questions) == std::future_status::timeout) {
            m_is_cancelled = m_is_cancelled || is_cancelled();
            if (!is_wait_told && waited.elapsed() > long_wait_ms) {
                is_wait_told = true;
                on_long_wait();
            }
        }
        const QString sha256 = begun.sha256.get();
        m_count += sha256.isEmpty() ? 0 : 1;
        m_is_given_up = m_is_given_up || (sha256.isEmpty() && m_is_cancelled);
        (files[begun.file].*m_look).sha256 = sha256;
    }
    m_begun.clear();
    m_waited_ns += waited.nsecsElapsed();
}

/// Empty when the file cannot be read to its end.
QString file_hashes::hash(const QString &path)
{
    QElapsedTimer busy;
    busy.start();
    QFile file(path);
    QString sha256;
    if (!m_is_cancelled && file.open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        sha256 = sha256_of(file, [this] { return m_is_cancelled.load(); });
    m_busy_ns += busy.nsecsElapsed();
    return sha256;
}
