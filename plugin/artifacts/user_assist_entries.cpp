#include "user_assist_entries.h"

#include "conversions.h"
#include "hive_rows.h"
#include "parse_user_assist.h"

using namespace Qt::StringLiterals;

namespace {

// Fields of an entry's data. Older, shorter layouts are read at the same offsets.
constexpr qsizetype run_count_offset = 4; ///< unsigned 32-bit number of runs
constexpr qsizetype run_count_length = 4;
constexpr qsizetype last_run_time_offset = 60; ///< FILETIME of the last run
constexpr qsizetype last_run_time_length = 8;

qint32 run_count(const QByteArray &data, const bool &is_cancelled)
{
    return integer_32_of(data.mid(run_count_offset, run_count_length), byte_order::little_endian,
                         is_cancelled);
}

/// Unix seconds; 0 for an entry without a time.
qint64 last_run_time(const QByteArray &data, const bool &is_cancelled)
{
    const qint64 filetime = integer_64_of(data.mid(last_run_time_offset, last_run_time_length),
                                          byte_order::little_endian, is_cancelled);
    return filetime > 0 ? registry::unix_seconds(filetime) : 0;
}

} // namespace

bool write_user_assist_entries(
    extraction &run, const std::function<std::optional<QString>(const QString &)> &displayed_name)
{
    const QString reg_path = run.extracted().key.path;
    const bool &is_cancelled = *run.context().is_cancelled;
    return write_rows_of_key<parse_user_assist>(
        run, &registry::user_assist_records,
        [&](const hive_rows &hive, const registry::struct_user_asist &entry,
            qsizetype position) -> std::optional<QStringList> {
            const auto name = displayed_name(rotated_name(entry.value_name, is_cancelled));
            if (!name)
                return std::nullopt;
            return QStringList{hive.user_name(),
                               entry.class_id,
                               *name,
                               QString::number(position),
                               QString::number(run_count(entry.value_data, is_cancelled)),
                               u"NTUSER.DAT"_s,
                               u"UserAssist"_s,
                               reg_path,
                               QString::number(last_run_time(entry.value_data, is_cancelled))};
        });
}
