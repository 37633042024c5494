#include "run_lock.h"

#include "console.h"

using namespace Qt::StringLiterals;

run_lock::run_lock(const QString &file) : m_file(file), m_lock(std::make_unique<QLockFile>(file))
{
    m_lock->setStaleLockTime(0); // only the death of its process makes a lock stale, no time does
}

run_lock::~run_lock() = default;

std::optional<refusal> run_lock::take(int wait_seconds)
{
    if (m_lock->tryLock(0))
        return std::nullopt;
    if (m_lock->error() == QLockFile::LockFailedError && wait_seconds > 0) {
        print_notice(
            u"waiting up to %1 s for another run in this result folder"_s.arg(wait_seconds));
        if (m_lock->tryLock(wait_seconds * 1000))
            return std::nullopt;
    }
    return refused();
}

refusal run_lock::refused() const
{
    if (m_lock->error() != QLockFile::LockFailedError)
        return {exit_result, u"the lock %1 cannot be made"_s.arg(m_file)};
    qint64 process = 0;
    QString machine;
    QString program;
    if (!m_lock->getLockInfo(&process, &machine, &program))
        return {exit_result,
                u"another run may be writing to this result folder; if none is, remove "
                "%1"_s.arg(m_file)};
    return {exit_result,
            u"another run writes to this result folder: %1, process %2 on %3; --wait SECONDS waits "
            "for its end. If that process is gone, remove %4"_s.arg(
                program, QString::number(process), machine, m_file)};
}

void run_lock::abandon()
{
    // Destroyed, it would remove the file. It stays reachable until the process ends.
    static QLockFile *abandoned = nullptr;
    abandoned = m_lock.release();
    Q_UNUSED(abandoned)
}
