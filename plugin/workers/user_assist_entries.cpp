#include "extraction_frame.h"
#include "parse_user_assist.h"

#include <limits>

using namespace Qt::StringLiterals;

// What the two extractors of the UserAssist key share: the reading of an entry's name and data.

namespace {

constexpr auto user_assist_key =
    "SOFTWARE\\Microsoft\\Windows\\CurrentVersion\\Explorer\\UserAssist"_L1;

// Fields of an entry's data. Older, shorter layouts are read at the same offsets.
constexpr qsizetype run_count_offset = 4; ///< unsigned 32-bit number of runs
constexpr qsizetype run_count_length = 4;
constexpr qsizetype last_run_time_offset = 60; ///< FILETIME of the last run
constexpr qsizetype last_run_time_length = 8;

/// The letter 13 places on, after the last letter from the first on.
char16_t rotated(char16_t letter, char16_t first_letter)
{
    constexpr int half_alphabet = 13;
    const bool is_in_first_half = letter < first_letter + half_alphabet;
    return static_cast<char16_t>(is_in_first_half ? letter + half_alphabet
                                                  : letter - half_alphabet);
}

} // namespace

/// Fills a table from the UserAssist entries of every user's hive. `displayed_name` turns the
/// decoded name of an entry into the name to show, or into nothing for an entry without a row.
void windows_installed_applications_winos::extract_user_assist(
    const result_tab &tab,
    const std::function<std::optional<QString>(const QString &)> &displayed_name)
{
    const key_reading<registry::struct_user_asist> reading = {user_assist_key, false,
                                                              &registry::user_assist_records};
    const QString reg_path = user_assist_key;
    extract_from_user_hives<parse_user_assist>(
        tab, reading, &windows_installed_applications_winos::without_source_root,
        [&](const user_source &hive, const registry::struct_user_asist &entry,
            qsizetype position) -> std::optional<QStringList> {
            const auto name = displayed_name(decrypt_program_name(entry.value_name));
            if (!name)
                return std::nullopt;
            const qint32 run_count = hex_to_decimal_fourbytes(
                entry.value_data.mid(run_count_offset, run_count_length), little_endian);
            const qint64 filetime = hex_to_decimal_eight_bytes(
                entry.value_data.mid(last_run_time_offset, last_run_time_length), little_endian);
            const qint64 last_run_time = filetime > 0 ? registry::unix_seconds(filetime) : 0;
            return QStringList{hive.user_name,
                               entry.class_id,
                               *name,
                               QString::number(position),
                               QString::number(run_count),
                               u"NTUSER.DAT"_s,
                               u"UserAssist"_s,
                               reg_path,
                               QString::number(last_run_time)};
        });
}

QString windows_installed_applications_winos::decrypt_program_name(QString name)
{
    for (QChar &character : name) {
        if (bool_cancel_extraction)
            return {};
        const char16_t code = character.unicode();
        if (code >= u'A' && code <= u'Z')
            character = rotated(code, u'A');
        else if (code >= u'a' && code <= u'z')
            character = rotated(code, u'a');
    }
    return name;
}

qint32 windows_installed_applications_winos::hex_to_decimal_fourbytes(QByteArray bytes,
                                                                      ENDIANS order)
{
    return static_cast<qint32>(read_integer(bytes, order, std::numeric_limits<qint32>::max()));
}

qint64 windows_installed_applications_winos::hex_to_decimal_eight_bytes(QByteArray bytes,
                                                                        ENDIANS order)
{
    return static_cast<qint64>(read_integer(bytes, order, std::numeric_limits<qint64>::max()));
}

/// Reads all of `bytes` as one unsigned number; 0 when it exceeds `maximum`.
quint64 windows_installed_applications_winos::read_integer(const QByteArray &bytes, ENDIANS order,
                                                           quint64 maximum) const
{
    if (order != little_endian && order != big_endian)
        return 0;
    const bool is_reversed = order == little_endian;
    quint64 number = 0;
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        if (is_reversed && bool_cancel_extraction)
            return 0;
        const auto byte = static_cast<quint8>(bytes[is_reversed ? bytes.size() - 1 - i : i]);
        if (number > (maximum - byte) / 256)
            return 0;
        number = number * 256 + byte;
    }
    return number;
}
