#include "table_descriptions.h"

using namespace Qt::StringLiterals;

namespace results {

namespace {

using kind = column_kind;

struct table_description
{
    QLatin1StringView name;
    QLatin1StringView title;
    QLatin1StringView proves;
    QLatin1StringView does_not_prove;
};

constexpr QLatin1StringView key_proves =
    "An installer wrote an Uninstall key of this name: for the whole machine where no account is "
    "named, else for the account. The key was last written at that time, by an installation, an "
    "update, a repair or another program."_L1;
constexpr QLatin1StringView key_does_not_prove =
    "That the program was ever run, or that its files are still there. Names, versions, folders "
    "and the install date are what the installer wrote. The date is local time and may be "
    "wrong."_L1;

constexpr table_description tables[] = {
    {"install_apps_64"_L1, "Uninstall keys, native view"_L1, key_proves, key_does_not_prove},
    {"install_apps_32"_L1, "Uninstall keys, 32-bit view"_L1, key_proves, key_does_not_prove},
    {"uninstall_apps"_L1, "UserAssist entries with \"uninstall\" in their names"_L1,
     "The account's shell kept an entry with \"uninstall\" in its name. With a count or a time, it "
     "was started from the shell, last at that time."_L1,
     "That anything was removed: an uninstaller may be cancelled or fail."_L1},
    {"registered_apps"_L1, "applications that registered their capabilities"_L1,
     "The application told Windows under this name which kinds of files or links it can open."_L1,
     "When it did that, for whom, or that it was ever run."_L1},
    {"metro_apps"_L1, "package folders of the accounts"_L1,
     "The account's profile has a folder for the data of this package."_L1,
     "That the application was opened, or when it was installed: Windows makes folders for packages "
     "that come with it. The table has no times."_L1},
    {"previously_executed_apps"_L1, "UserAssist entries: what the accounts' shells counted"_L1,
     "The account's shell (desktop, start menu, task bar) counted so many starts of this entry, the "
     "last one at that time."_L1,
     "Starts by other ways, such as a command line, a service or a task. Who sat at the keyboard. "
     "Earlier runs leave no time. An entry without count and time may be listed without a start."_L1},
    {"third_party_applications"_L1, "programs that the Compatibility Assistant saw run"_L1,
     "The Program Compatibility Assistant noted the program under this account, as it does when a "
     "program or an installer is started."_L1,
     "When or how often that was: the times are those of the program's file, as the system that "
     "read the volume gives them, and 0 where the file is not there."_L1},
    {"hidden_desktop_icons_app"_L1, "settings of desktop icons"_L1,
     "The account has a setting that shows or hides this icon of the desktop."_L1,
     "That the account used what is behind the icon, or made the setting itself."_L1},
    {table_of_finds, "all keys and values that were found deleted"_L1,
     "A record of this key or value lies in free space of the hive: it stood there once, as far as the "
     "record is whole."_L1,
     "When it was deleted, or by whom: Windows and programs remove keys by themselves, too. Parts of a "
     "record that is not whole may belong to another."_L1},
};

enum shown : bool
{
    not_shown = false,
    is_shown = true
};

enum subject : bool
{
    no_subject = false,
    is_subject = true
};

/// One meaning for all tables that have a column of the name, or for one table: what a time or a
/// key tells differs from table to table.
struct column_description
{
    QLatin1StringView table; ///< empty: all that have no description of their own
    QLatin1StringView name;
    kind is;
    QLatin1StringView meaning;
    shown is_shown = not_shown; ///< or what is derived of it, in its place
    subject is_subject = no_subject;
    file_time time = file_time::none;
};

constexpr column_description columns[] = {
    {{}, "INT"_L1, kind::row_id, "number of the row in its table"_L1, is_shown},
    {{},
     "system_account"_L1,
     kind::account,
     "account whose hive or folder the row comes from; empty for the machine's"_L1,
     is_shown},

    {{}, "display_name"_L1, kind::text, "name that the installer wrote"_L1, is_shown, is_subject},
    {{}, "parent_name"_L1, kind::text, "name of the Uninstall key"_L1, not_shown, is_subject},
    {{}, "display_version"_L1, kind::text, "version that the installer wrote"_L1, is_shown},
    {{}, "publisher"_L1, kind::text, "publisher that the installer wrote"_L1, is_shown},
    {{}, "install_location"_L1, kind::path, "folder that the installer wrote"_L1},
    {{}, "install_source"_L1, kind::path, "where it was installed from"_L1},
    {{}, "url"_L1, kind::text, "address for information, by the installer"_L1},
    {{}, "uninstall_string"_L1, kind::path, "command that uninstalls"_L1},
    {{},
     "install_date"_L1,
     kind::install_date,
     "Install date that the installer wrote (a day)"_L1,
     is_shown,
     no_subject,
     file_time::created},
    {"install_apps_64"_L1, "modified_timestamp"_L1, kind::unix_time,
     "Uninstall key last written"_L1, is_shown, no_subject, file_time::modified},
    {"install_apps_32"_L1, "modified_timestamp"_L1, kind::unix_time,
     "Uninstall key last written"_L1, is_shown, no_subject, file_time::modified},

    {{},
     "exename"_L1,
     kind::program,
     "name of the UserAssist entry, decoded"_L1,
     is_shown,
     is_subject},
    {{}, "class_id"_L1, kind::text, "UserAssist class: of programs, or of shortcuts"_L1},
    {{}, "entry_index"_L1, kind::number, "place of the entry in its hive, from 0"_L1},
    {{}, "runcount"_L1, kind::run_count, "how often the shell counted a start"_L1, is_shown},
    {"previously_executed_apps"_L1, "lastruntime"_L1, kind::unix_time, "Last run"_L1, is_shown,
     no_subject, file_time::accessed},
    {"uninstall_apps"_L1, "lastruntime"_L1, kind::unix_time, "Uninstaller last run"_L1, is_shown,
     no_subject, file_time::accessed},

    {"registered_apps"_L1, "key_name"_L1, kind::text, "name under which it registered"_L1, is_shown,
     is_subject},
    {"registered_apps"_L1, "value"_L1, kind::text, "registry path of its capabilities"_L1,
     is_shown},

    {{}, "filename"_L1, kind::package, "name of the package folder"_L1, is_shown, is_subject},
    {"metro_apps"_L1, "windows_path"_L1, kind::path, "path of the package folder"_L1, is_shown},
    {"metro_apps"_L1, "creation_timestamp"_L1, kind::unix_time, "Package folder created"_L1,
     not_shown, no_subject, file_time::created},
    {"metro_apps"_L1, "modification_timestamp"_L1, kind::unix_time,
     "Package folder last written"_L1, not_shown, no_subject, file_time::modified},
    {"metro_apps"_L1, "last_access_timestamp"_L1, kind::unix_time,
     "Package folder last accessed"_L1, not_shown, no_subject, file_time::accessed},

    {{},
     "windows_path"_L1,
     kind::program,
     "path of the program, as the entry is named"_L1,
     is_shown,
     is_subject},
    {"third_party_applications"_L1, "creation_timestamp"_L1, kind::unix_time,
     "Program file created"_L1, is_shown, no_subject, file_time::created},
    {"third_party_applications"_L1, "modification_timestamp"_L1, kind::unix_time,
     "Program file last written"_L1, is_shown, no_subject, file_time::modified},
    {"third_party_applications"_L1, "last_access_timestamp"_L1, kind::unix_time,
     "Program file last accessed"_L1, is_shown, no_subject, file_time::accessed},
    {{}, "file_path"_L1, kind::path, "path within the volume"_L1},

    {{}, "app_name"_L1, kind::text, "name of the icon"_L1, is_shown, is_subject},
    {{}, "hidden"_L1, kind::text, "whether the icon is hidden: YES or NO"_L1, is_shown},

    {{}, "reg_file"_L1, kind::text, "hive that the row comes from"_L1},
    {{}, "node_name"_L1, kind::text, "name of the registry key"_L1},
    {{}, "reg_path"_L1, kind::text, "path of the registry key in its hive"_L1},
    {{}, "source_file"_L1, kind::path, "path of the evidence file within the volume"_L1},
    {{}, "source_count_name"_L1, kind::text, "number of the source: Source1, Source2, ..."_L1},
    {{}, "os_scheme_display"_L1, kind::text, "system of the source"_L1},

    {{}, "state"_L1, kind::text, "recovered: whole, or what of the record is missing"_L1, is_shown},
    {{},
     "path_state"_L1,
     kind::text,
     "recovered: how far the path of the key is known"_L1,
     is_shown},
    {{}, "offset"_L1, kind::number, "recovered: where the record lies in its file"_L1, is_shown},
    {{}, "evidence_file"_L1, kind::path, "recovered: file of the evidence that was searched"_L1},

    {table_of_finds, "kind"_L1, kind::text, "key, or value and of what key"_L1, is_shown},
    {table_of_finds, "key_path"_L1, kind::text, "path of the key in its hive"_L1, is_shown,
     is_subject},
    {table_of_finds, "value_name"_L1, kind::text, "name of the value"_L1, is_shown, is_subject},
    {table_of_finds, "value_type"_L1, kind::number, "registry type of the value"_L1},
    {table_of_finds, "data_size"_L1, kind::number, "bytes of data that the value had"_L1},
    {table_of_finds, "value_data"_L1, kind::text, "data that are still there, long ones cut"_L1,
     is_shown},
    {table_of_finds, "key_written_timestamp"_L1, kind::unix_time, "Key last written"_L1, is_shown,
     no_subject, file_time::modified},

    {{}, "bookmark"_L1, kind::suite, "bookmark of a suite; 0 here"_L1},
    {{}, "arken_tag_value"_L1, kind::suite, "for a suite: tags"_L1},
    {{}, "notes_icon"_L1, kind::suite, "for a suite: icon of notes"_L1},
    {{}, "tags_icon"_L1, kind::suite, "for a suite: icon of tags"_L1},
    {{}, "notes"_L1, kind::suite, "for a suite: notes"_L1},
    {{}, "artifacts_relation_source_file"_L1, kind::suite, "for a suite: related file"_L1},
};

const column_description *description_of(const QString &table, const QString &name)
{
    const column_description *of_all = nullptr;
    for (const column_description &described : columns) {
        if (described.name != name)
            continue;
        if (described.table == table)
            return &described;
        if (described.table.isEmpty())
            of_all = &described;
    }
    return of_all;
}

} // namespace

QStringList described_tables()
{
    QStringList names;
    for (const table_description &table : tables) {
        if (table.name != table_of_finds)
            names.append(table.name);
    }
    return names;
}

QString title_of(const QString &table)
{
    for (const table_description &described : tables) {
        if (described.name == table)
            return described.title;
    }
    return {};
}

table_evidence evidence_of(const QString &table)
{
    for (const table_description &described : tables) {
        if (described.name == table)
            return {described.proves, described.does_not_prove};
    }
    return {};
}

column described_column(const QString &table, const QString &name)
{
    const column_description *described = description_of(table, name);
    if (described == nullptr)
        return {name, {}, kind::text, false, false, false, file_time::none};
    return {name,           described->meaning,  described->is,
            false,          described->is_shown, described->is_subject,
            described->time};
}

} // namespace results
