#ifndef EXTRACTION_OPTIONS_H
#define EXTRACTION_OPTIONS_H

#include <QHash>
#include <QString>
#include <QStringList>
#include <QVariant>

/// What a host may ask for beyond what every host gets. A host sets the dynamic property
/// "extraction_options" of the plug-in object, a QVariantMap with the members' names as keys.
struct extraction_options
{
    bool ignore_letter_case = false;     ///< look files up as Windows does, see case_blind_paths
    bool decode_by_type = false;         ///< decode registry data as their type says
    bool installations_of_users = false; ///< read the Uninstall keys of the users' hives too
    bool keep_hives_open = false;        ///< share one handle of a hive among the walks of a run
    bool report_unread = false;          ///< log what of the hives cannot be read
    bool old_layout = false; ///< look for accounts in "Documents and Settings" where no Users is

    /// Full path of a source file to the file that is read in its place. Rows and log lines name
    /// the source file. A path leads to at most one other: the map is not applied again. Its paths
    /// are clean ones, see QDir::cleanPath().
    QHash<QString, QString> hive_copies;

    /// The file to read where the source file at `path` is meant.
    QString file_to_read(const QString &path) const;
};

/// Options, and a line for each entry of the property that is none of them.
struct parsed_options
{
    extraction_options options;
    QStringList ignored;
};

/// Reads the property's value. Unknown keys and values of another type are ignored; an invalid
/// value, which an unset property has, gives the options that every host gets.
parsed_options extraction_options_from(const QVariant &property);

#endif
