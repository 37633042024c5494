#ifndef FILE_IDENTITY_H
#define FILE_IDENTITY_H

#include <QByteArray>
#include <QString>

#include <optional>
#include <tuple>

/// What a path leads to. Every name of a file or folder has the same one: hard links, bind mounts
/// and names in other letter case included.
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

/// What a path leads to, links followed; nothing when it leads nowhere.
std::optional<file_facts> facts_of(const QString &path);

/// The same for a path as the file system spells it; a link is what it is itself.
std::optional<file_facts> facts_of_entry(const QByteArray &path);

#endif
