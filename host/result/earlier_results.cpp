#include "earlier_results.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>

#include <algorithm>

#include "recorded_runs.h"
#include "row_counter.h"

using namespace Qt::StringLiterals;

namespace {

using kind = result_mode::kind;

/// The runs whose rows may be in the database: those since it was last made anew.
QList<QJsonObject> runs_in_effect(const QList<QJsonObject> &runs)
{
    QList<QJsonObject> in_effect;
    for (const QJsonObject &run : runs) {
        const QString mode = run.value("mode"_L1).toString();
        if (mode == name_of(kind::replace) || mode == name_of(kind::first))
            in_effect.clear();
        in_effect.append(run);
    }
    return in_effect;
}

int number_of(const QJsonObject &run)
{
    return run.value("source"_L1).toObject().value("number"_L1).toInt(1);
}

QString version_of(const QJsonObject &run, QLatin1StringView program)
{
    return run.value(program).toObject().value("version"_L1).toString();
}

bool is_of_version(const QJsonObject &run, const described_source &source)
{
    return version_of(run, "program"_L1) == source.host_version &&
           version_of(run, "library"_L1) == source.library_version;
}

/// What a folder holds already.
struct held_results
{
    QList<QJsonObject> runs;
    bool is_any = false;
};

/// Whether the database has rows, or tables whose rows cannot be counted.
bool has_rows(const QString &database_file, const QStringList &tables)
{
    if (tables.isEmpty())
        return false; // or there is no database
    const row_counts counts = count_rows(database_file, tables);
    return counts.total() > 0 || !counts.failure.isEmpty();
}

/// Runs that left no rows, such as those that failed, hold nothing. `there` are the tables that the
/// database has of the plug-in's.
held_results results_in(const run_record &record, const result_location &location,
                        const QStringList &there)
{
    return has_rows(location.database_file, there)
               ? held_results{runs_in_effect(record.earlier()), true}
               : held_results{};
}

/// The run of `held` that this source would mix with: one of another source, or of another version.
const QJsonObject *stranger_in(const held_results &held, const described_source &source)
{
    const auto found =
        std::find_if(held.runs.begin(), held.runs.end(), [&source](const QJsonObject &run) {
            return !is_of_version(run, source) || !is_of_source(run, source);
        });
    return found == held.runs.end() ? nullptr : &*found;
}

const QJsonObject *run_of_source(const held_results &held, const described_source &source)
{
    const auto found =
        std::find_if(held.runs.begin(), held.runs.end(),
                     [&source](const QJsonObject &run) { return is_of_source(run, source); });
    return found == held.runs.end() ? nullptr : &*found;
}

QString described_as_unknown(const run_record &record)
{
    return record.damage().isEmpty()
               ? u"an unknown source (no run record tells of it)"_s
               : u"an unknown source (the run record cannot be read: %1)"_s.arg(record.damage());
}

QString described(const QJsonObject &run, const described_source &source)
{
    if (!is_of_source(run, source))
        return u"another source, %1"_s.arg(volume_of(run));
    return u"another version (program %1, library %2)"_s.arg(version_of(run, "program"_L1),
                                                             version_of(run, "library"_L1));
}

/// What --add does depends on whether rows of this source are there.
refusal mixture(const result_location &location, const QString &what, bool is_source_there)
{
    const QString way =
        is_source_there
            ? u"--add --force adds the rows of this source, which is among them, once more"_s
            : u"--add adds the rows of this source to them"_s;
    return {exit_result, u"result folder %1 holds results of %2: %3, --replace makes the database "
                         "anew"_s.arg(location.result_directory, what, way)};
}

/// Nothing when even the last number is taken, which only a forged record or database may tell.
std::optional<int> next_number(const held_results &held, const result_location &location,
                               const QStringList &tables)
{
    int largest = largest_source_number(location.database_file, tables);
    for (const QJsonObject &run : held.runs)
        largest = std::max(largest, number_of(run));
    return largest < results::last_source_number ? std::optional(largest + 1) : std::nullopt;
}

chosen_mode choose_number(const held_results &held, const result_location &location,
                          const QStringList &tables, const described_source &source,
                          bool add_same_again)
{
    if (const QJsonObject *same = run_of_source(held, source)) {
        if (add_same_again)
            return {{kind::add, number_of(*same)}, std::nullopt};
        return {{},
                refusal{exit_result, u"this source is Source%1 of result folder %2 already; "
                                     "--force adds its rows once more"_s.arg(number_of(*same))
                                         .arg(location.result_directory)}};
    }
    if (const auto number = next_number(held, location, tables))
        return {{kind::add, *number}, std::nullopt};
    return {
        {},
        refusal{exit_result, u"result folder %1 has no number left for another source; "
                             "--replace makes the database anew"_s.arg(location.result_directory)}};
}

/// Somebody else's database must neither be filled nor removed.
std::optional<refusal> refusal_of_foreign(const QString &database_file, const QStringList &foreign)
{
    constexpr qsizetype most_told = 5;
    if (foreign.isEmpty())
        return std::nullopt;
    const qsizetype more = foreign.size() - most_told;
    return refusal{exit_result,
                   u"%1 holds tables that no run makes, so it is neither filled nor replaced: "
                   "%2%3"_s.arg(database_file, foreign.mid(0, most_told).join(", "_L1),
                                more > 0 ? u" and %1 more"_s.arg(more) : QString())};
}

QStringList without(QStringList list, const QStringList &taken_out)
{
    list.removeIf([&taken_out](const QString &each) {
        return taken_out.contains(each, Qt::CaseInsensitive);
    });
    return list;
}

} // namespace

QString name_of(result_mode::kind mode)
{
    switch (mode) {
    case kind::first:
        return u"first"_s;
    case kind::again:
        return u"again"_s;
    case kind::replace:
        return u"replace"_s;
    case kind::add:
        return u"add"_s;
    }
    return {};
}

chosen_mode choose_mode(const run_record &record, const result_location &location,
                        const QStringList &tables, const described_source &source,
                        const earlier_results_wish &wish)
{
    const bool is_there = QFileInfo::exists(location.database_file);
    const QStringList there = is_there ? tables_in(location.database_file) : QStringList();
    const QStringList foreign = without(there, tables);
    if (auto refused = refusal_of_foreign(location.database_file, foreign))
        return {{}, refused};
    if (wish.replace)
        return {{kind::replace, 1}, std::nullopt};
    const held_results held = results_in(record, location, there);
    if (!held.is_any)
        return {{kind::first, 1}, std::nullopt};
    if (wish.add)
        return choose_number(held, location, there, source, wish.add_same_again);
    if (held.runs.isEmpty())
        return {{}, mixture(location, described_as_unknown(record), false)};
    if (const QJsonObject *stranger = stranger_in(held, source))
        return {{},
                mixture(location, described(*stranger, source),
                        run_of_source(held, source) != nullptr)};
    return {{kind::again, number_of(held.runs.last())}, std::nullopt};
}

QString remove_database(const QString &database_file)
{
    for (const QString &path : files_of_database(database_file)) {
        QFile file(path);
        if (file.exists() && !file.remove())
            return file.errorString();
    }
    return {};
}
