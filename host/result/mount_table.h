#ifndef MOUNT_TABLE_H
#define MOUNT_TABLE_H

#include <QByteArray>
#include <QList>

#include <optional>

/// Where something lies on its file system, whatever that is mounted at. Paths are bytes, as file
/// systems spell them.
struct device_place
{
    QByteArray device;
    QByteArray path; ///< from the root of the file system, without trailing "/"
    int mount = 0;   ///< the mount that it is seen through
    /// Whether `path` can be believed: a network file system calls the root of each mount "/".
    bool is_certain = true;
};

/// What is mounted where, which tells a bind mount from a folder of its own.
class mount_table
{
public:
    /// The table as this process sees it; one that knows nothing on systems without bind mounts.
    static mount_table of_this_process();

    /// A table in the format of Linux' /proc/self/mountinfo.
    explicit mount_table(const QByteArray &mountinfo);

    /// Where an absolute path without links lies; nothing when the table does not tell.
    std::optional<device_place> place_of(const QByteArray &path) const;

    /// Where everything lies that is mounted below a folder, however deep.
    QList<device_place> places_mounted_below(const QByteArray &folder) const;

private:
    struct mounted_part
    {
        int id = 0;
        int parent = 0;
        QByteArray device;
        QByteArray root; ///< the folder of the file system that is mounted
        QByteArray point;
        bool tells_root = true;
    };

    static std::optional<mounted_part> read_line(const QByteArray &line);
    const mounted_part *first_mount() const;
    const mounted_part *mounted_on(const mounted_part &parent, const QByteArray &point) const;
    const mounted_part *mount_of(const QByteArray &path) const;
    static device_place place_in(const mounted_part &part, const QByteArray &path);

    QList<mounted_part> m_mounts;
};

/// Whether a path is a folder or lies below it; both without trailing "/", "" being the root.
bool is_at_or_below(const QByteArray &path, const QByteArray &folder);

#endif
