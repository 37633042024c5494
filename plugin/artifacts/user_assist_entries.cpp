#include "user_assist_entries.h"

#include "conversions.h"
#include "hive_rows.h"
#include "parse_user_assist.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// Where the fields of an entry's data stand.
struct entry_layout
{
    qsizetype run_count_offset; ///< unsigned 32-bit number of runs
    qsizetype last_run_offset;  ///< FILETIME of the last run
    qint32 first_run_count;     ///< the count of an entry that was never run
};

/// The layout of Windows 7 and later. Shorter layouts are read at the same offsets unless a host
/// asks for more.
constexpr entry_layout later_layout = {4, 60, 0};

/// The layout of Windows 2000 to Vista.
constexpr entry_layout early_layout = {4, 8, 5};
constexpr qsizetype early_length = 16;

constexpr qsizetype run_count_length = 4;
constexpr qsizetype last_run_length = 8;

/// What an entry's data hold.
struct entry_runs
{
    qint32 count;
    qint64 last_time; ///< Unix seconds; 0 for an entry without a time
};

entry_runs runs_of(const QByteArray &data, const entry_layout &layout, const bool &is_cancelled)
{
    const auto order = byte_order::little_endian;
    const qint32 count =
        integer_32_of(data.mid(layout.run_count_offset, run_count_length), order, is_cancelled);
    const qint64 filetime =
        integer_64_of(data.mid(layout.last_run_offset, last_run_length), order, is_cancelled);
    return {std::max(0, count - layout.first_run_count),
            filetime > 0 ? registry::unix_seconds(filetime) : 0};
}

} // namespace

bool write_user_assist_entries(
    extraction &run, const std::function<std::optional<QString>(const QString &)> &displayed_name)
{
    const QString reg_path = run.extracted().key.path;
    const bool &is_cancelled = *run.context().is_cancelled;
    return write_rows_of_users<parse_user_assist>(
        run, run.extracted().key, &registry::user_assist_records,
        [&](const hive_rows &hive, const registry::struct_user_asist &entry,
            qsizetype position) -> std::optional<QStringList> {
            const auto name = displayed_name(rotated_name(entry.value_name, is_cancelled));
            if (!name)
                return std::nullopt;
            const bool is_early =
                run.context().options.decode_by_type && entry.value_data.size() == early_length;
            const entry_runs runs =
                runs_of(entry.value_data, is_early ? early_layout : later_layout, is_cancelled);
            return QStringList{hive.user_name(),
                               entry.class_id,
                               *name,
                               QString::number(position),
                               QString::number(runs.count),
                               u"NTUSER.DAT"_s,
                               u"UserAssist"_s,
                               reg_path,
                               QString::number(runs.last_time)};
        });
}
