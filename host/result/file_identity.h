#ifndef FILE_IDENTITY_H
#define FILE_IDENTITY_H

#include <QByteArray>
#include <QString>

#include <optional>
#include <tuple>

/// The identity of what a path leads to. All names of a file or folder have the same identity,
/// including hard links, bind mounts and names in other letter case.
struct file_identity
{
    quint64 device = 0;
    quint64 inode = 0;

    bool operator==(const file_identity &other) const
    {
        return std::tie(device, inode) == std::tie(other.device, other.inode);
    }
    bool operator<(const file_identity &other) const
    {
        return std::tie(device, inode) < std::tie(other.device, other.inode);
    }
};

/// The identity of what lies at `path` and how many names it has.
struct file_facts
{
    file_identity identity;
    quint64 links = 0;
    bool is_folder = false;
};

/// The identity of what a path leads to, links followed. Nothing when it leads nowhere.
std::optional<file_facts> facts_of(const QString &path);

/// The same for a path as the file system spells it. A link is not followed.
std::optional<file_facts> facts_of_entry(const QByteArray &path);

#endif
