#ifndef PLUGIN_HELPER_FUNCTIONS_H
#define PLUGIN_HELPER_FUNCTIONS_H

#include <QString>
#include <QStringList>
#include <QWidget>

#include <array>

/// The extensions of one kind of media, in lists by their first character after the dot.
struct media_extension_table
{
    std::array<QStringList, 10> digit_lists;  ///< first character '0' to '9'
    std::array<QStringList, 26> letter_lists; ///< first character 'a' to 'z'
};

/// The helper object of a plug-in: recognises media files by extension and makes working copies of
/// evidence files in a folder that the plug-in names.
class plugin_helper_functions : public QWidget
{
    Q_OBJECT

public:
    /// Fills the three media tables; the cancel flag is clear and there is no adhoc folder yet.
    explicit plugin_helper_functions(QWidget *parent = nullptr);

    /// Clears the cancel flag.
    void set_essentials();
    /// Sets or clears the flag that makes every check return false.
    void set_cancel_extraction(bool cancel_extraction);
    /// Takes the folder of the working copies as given; it must end in "/", since a copy's path is
    /// this text directly followed by the file's name.
    void set_adhoc_parent_path(const QString &parent_path);

    /// True when the file's extension, in any letter case, is that of an image.
    bool check_is_image_by_extn(const QString &file_name) const;
    /// True when the file's extension, in any letter case, is that of a video.
    bool check_is_video_by_extn(const QString &file_name) const;
    /// True when the file's extension, in any letter case, is that of a sound file.
    bool check_is_audio_by_extn(const QString &file_name) const;

    /// Copies an SQLite database with those of its "-shm" and "-wal" companions that exist, under a
    /// name that is free in the adhoc folder for all three, and returns the copy's path. The copies
    /// are writable, so that SQLite can replay the companions. A companion that cannot be copied
    /// whole is logged and left out. Empty, and nothing left behind, when the path is blank, while
    /// the adhoc folder is the empty text, when cancelled, and when the database cannot be copied
    /// whole. Nothing removes the copies later.
    QString get_adhoc_path_for_database(const QString &database_path) const;
    /// The same for a file without companions.
    QString get_adhoc_path_for_regular_file(const QString &file_path) const;

    /// The extensions of images, in the order in which they are looked up.
    const media_extension_table &image_extensions() const { return image_table; }
    /// The extensions of videos, in the order in which they are looked up.
    const media_extension_table &video_extensions() const { return video_table; }
    /// The extensions of sound files, in the order in which they are looked up.
    const media_extension_table &audio_extensions() const { return audio_table; }

private:
    void initialize_image_extension_list();
    void initialize_audio_extension_list();
    void initialize_video_extension_list();
    bool is_extension_listed(const QString &file_name, const media_extension_table &table) const;
    QString make_adhoc_copy(const QString &source_path, const QStringList &suffixes,
                            const QString &function_info) const;
    void copy_companion(const QString &source_path, const QString &copy_path) const;

    bool bool_cancel_extraction = false;
    media_extension_table image_table;
    media_extension_table video_table;
    media_extension_table audio_table;
    QString adhoc_parent_path;
};

#endif
