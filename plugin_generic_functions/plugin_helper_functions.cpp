#include "plugin_helper_functions.h"

#include "available_name.h"
#include "media_extensions.h"
#include "plugin_static_function.h"
#include "whole_file_copy.h"

#include <QFile>
#include <QFileInfo>
#include <QStringTokenizer>

using namespace Qt::StringLiterals;

namespace {

// The list of an extension's first character; nullptr for other than a digit or a letter a to z.
template<typename table_type>
auto list_for(table_type &table, QChar first) -> decltype(table.digit_lists.data())
{
    const char16_t character = first.unicode();
    if (character >= u'0' && character <= u'9')
        return &table.digit_lists[static_cast<size_t>(character - u'0')];
    if (character >= u'a' && character <= u'z')
        return &table.letter_lists[static_cast<size_t>(character - u'a')];
    return nullptr;
}

void fill(media_extension_table &table, QLatin1StringView extensions)
{
    for (const QLatin1StringView extension : qTokenize(extensions, u' '))
        list_for(table, extension.at(1))->append(extension);
}

// What stands behind the last dot, in lower case; empty when there is no dot.
QString lower_case_extension(const QString &file_name)
{
    const QString name = file_name.toLower().trimmed();
    return name.contains(u'.') ? name.section(u'.', -1) : QString();
}

using status = whole_file_copy_result::status;

void log_companion_failure(const QString &path, const QString &error)
{
    const QString function_info =
        u"QString plugin_helper_functions::get_adhoc_path_for_database(QString)"_s;
    const QString tag = u"[get_adhoc_path_for_database]"_s;
    plugin_static_function::app_debug(tag + " companion file copy ----FAILED---- :"_L1 + path,
                                      function_info);
    plugin_static_function::app_debug(tag + " Error:"_L1 + error, function_info);
}

void remove_parts(const QString &path, const QStringList &suffixes)
{
    for (const QString &suffix : suffixes)
        QFile::remove(path + suffix);
}

} // namespace

plugin_helper_functions::plugin_helper_functions(QWidget *parent) : QWidget(parent)
{
    initialize_image_extension_list();
    initialize_audio_extension_list();
    initialize_video_extension_list();
}

void plugin_helper_functions::set_essentials()
{
    bool_cancel_extraction = false;
}

void plugin_helper_functions::set_cancel_extraction(bool cancel_extraction)
{
    bool_cancel_extraction = cancel_extraction;
}

void plugin_helper_functions::set_adhoc_parent_path(const QString &parent_path)
{
    adhoc_parent_path = parent_path;
}

bool plugin_helper_functions::check_is_image_by_extn(const QString &file_name) const
{
    return is_extension_listed(file_name, image_table);
}

bool plugin_helper_functions::check_is_video_by_extn(const QString &file_name) const
{
    return is_extension_listed(file_name, video_table);
}

bool plugin_helper_functions::check_is_audio_by_extn(const QString &file_name) const
{
    return is_extension_listed(file_name, audio_table);
}

QString plugin_helper_functions::get_adhoc_path_for_database(const QString &database_path) const
{
    return make_adhoc_copy(
        database_path, {u"-shm"_s, u"-wal"_s},
        u"QString plugin_helper_functions::get_adhoc_path_for_database(QString)"_s);
}

QString plugin_helper_functions::get_adhoc_path_for_regular_file(const QString &file_path) const
{
    return make_adhoc_copy(
        file_path, {},
        u"QString plugin_helper_functions::get_adhoc_path_for_regular_file(QString)"_s);
}

void plugin_helper_functions::initialize_image_extension_list()
{
    fill(image_table, media_extensions::image);
}

void plugin_helper_functions::initialize_audio_extension_list()
{
    fill(audio_table, media_extensions::audio);
}

void plugin_helper_functions::initialize_video_extension_list()
{
    fill(video_table, media_extensions::video);
}

bool plugin_helper_functions::is_extension_listed(const QString &file_name,
                                                  const media_extension_table &table) const
{
    const QString extension = lower_case_extension(file_name);
    if (extension.isEmpty())
        return false;
    const QStringList *list = list_for(table, extension.front());
    if (list == nullptr)
        return false;
    for (const QString &entry : *list) {
        if (bool_cancel_extraction)
            return false;
        if (QStringView(entry).mid(1) == extension)
            return true;
    }
    return false;
}

// The suffixes are those of the file's companions.
QString plugin_helper_functions::make_adhoc_copy(const QString &source_path,
                                                 const QStringList &suffixes,
                                                 const QString &function_info) const
{
    if (source_path.trimmed().isEmpty() || adhoc_parent_path.isEmpty())
        return {};
    // SQLite would replay a file at a companion's place into this copy.
    const QString name = available_name(QFileInfo(source_path).fileName(), adhoc_parent_path,
                                        QStringList(QString()) + suffixes, function_info);
    if (name.isEmpty())
        return {};
    QString copy_path = adhoc_parent_path + name;
    if (copy_whole_file(source_path, copy_path, bool_cancel_extraction).how != status::copied)
        return {};
    for (const QString &suffix : suffixes)
        copy_companion(source_path + suffix, copy_path + suffix);
    if (bool_cancel_extraction) {
        remove_parts(copy_path, QStringList(QString()) + suffixes);
        return {};
    }
    return copy_path;
}

// A companion that cannot be copied does not prevent the copy of the database.
void plugin_helper_functions::copy_companion(const QString &source_path,
                                             const QString &copy_path) const
{
    if (!QFileInfo::exists(source_path))
        return;
    const whole_file_copy_result result =
        copy_whole_file(source_path, copy_path, bool_cancel_extraction);
    if (result.how == status::source_failed || result.how == status::destination_failed)
        log_companion_failure(source_path, result.error);
}
