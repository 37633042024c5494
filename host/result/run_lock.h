#ifndef RUN_LOCK_H
#define RUN_LOCK_H

#include <QLockFile>
#include <QString>

#include <memory>
#include <optional>

#include "exit_code.h"

/// Keeps other runs out of a result folder while it lives. The lock of a process that is gone is
/// taken over.
class run_lock
{
public:
    /// `file` is the lock's file, in a folder that exists.
    explicit run_lock(const QString &file);
    ~run_lock();
    Q_DISABLE_COPY_MOVE(run_lock)

    /// Takes the lock. If another run has it, waits for it up to `wait_seconds` and says so. Why it
    /// could not be taken; nothing when it was.
    std::optional<refusal> take(int wait_seconds);

    /// Leaves the lock's file where it is: its folder is another one by now.
    void abandon();

private:
    refusal refused() const;

    QString m_file;
    std::unique_ptr<QLockFile> m_lock;
};

#endif
