#include "earlier_results.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>

#include <algorithm>

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
    return run.value("source"_L1).toObject().value("number"_L1).toInt();
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

held_results results_in(const run_record &record, const result_location &location,
                        const QStringList &tables)
{
    if (!QFileInfo::exists(location.database_file))
        return {};
    held_results held{runs_in_effect(record.earlier()), false};
    held.is_any = !held.runs.isEmpty() || count_rows(location.database_file, tables).total() > 0;
    return held;
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

QString described(const QJsonObject *run, const described_source &source)
{
    if (run == nullptr)
        return u"an unknown source (no run record tells of it)"_s;
    if (!is_of_source(*run, source))
        return u"another source, %1"_s.arg(volume_of(*run));
    return u"another version (program %1, library %2)"_s.arg(version_of(*run, "program"_L1),
                                                             version_of(*run, "library"_L1));
}

refusal mixture(const result_location &location, const QString &what)
{
    return {exit_result,
            u"result folder %1 holds results of %2: --add adds the rows of this source to them, "
            "--replace makes the database anew"_s.arg(location.result_directory, what)};
}

int next_number(const held_results &held, const result_location &location,
                const QStringList &tables)
{
    constexpr int most = 1'000'000; // what a forged record or database may tell
    int largest = largest_source_number(location.database_file, tables);
    for (const QJsonObject &run : held.runs)
        largest = std::max(largest, number_of(run));
    return std::clamp(largest, 0, most) + 1;
}

chosen_mode choose_number(const held_results &held, const result_location &location,
                          const QStringList &tables, const described_source &source,
                          bool add_same_again)
{
    for (const QJsonObject &run : held.runs) {
        if (!is_of_source(run, source))
            continue;
        if (add_same_again)
            return {{kind::add, std::max(1, number_of(run))}, std::nullopt};
        return {{},
                refusal{exit_result, u"this source is Source%1 of result folder %2 already; "
                                     "--force adds its rows once more"_s.arg(number_of(run))
                                         .arg(location.result_directory)}};
    }
    return {{kind::add, next_number(held, location, tables)}, std::nullopt};
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
    if (wish.replace)
        return {{kind::replace, 1}, std::nullopt};
    const held_results held = results_in(record, location, tables);
    if (!held.is_any)
        return {{kind::first, 1}, std::nullopt};
    if (wish.add)
        return choose_number(held, location, tables, source, wish.add_same_again);
    const QJsonObject *stranger = stranger_in(held, source);
    if (held.runs.isEmpty() || stranger != nullptr)
        return {{}, mixture(location, described(stranger, source))};
    return {{kind::again, std::max(1, number_of(held.runs.last()))}, std::nullopt};
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
