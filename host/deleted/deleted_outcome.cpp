#include "deleted_outcome.h"

#include <QJsonArray>

#include "rebuilt_generations.h"

using namespace Qt::StringLiterals;

namespace {

/// Entries without a text are left out.
QJsonObject without_empty(QJsonObject object)
{
    for (const QString &key : object.keys()) {
        if (object.value(key).isString() && object.value(key).toString().isEmpty())
            object.remove(key);
    }
    return object;
}

QJsonArray searched_entry(const QList<searched_hive> &hives)
{
    QJsonArray entries;
    for (const searched_hive &hive : hives)
        entries.append(without_empty({{"path"_L1, hive.path},
                                      {"failure"_L1, hive.failure},
                                      {"free_bytes"_L1, hive.free_bytes},
                                      {"bytes_behind_bins"_L1, hive.bytes_behind_bins},
                                      {"deleted_keys"_L1, hive.keys_in_free_space},
                                      {"deleted_values"_L1, hive.values_in_free_space},
                                      {"finds"_L1, hive.finds},
                                      {"without_row"_L1, hive.without_row}}));
    return entries;
}

QJsonArray rebuilt_entry(const QList<rebuilt_copy> &copies)
{
    QJsonArray entries;
    for (const rebuilt_copy &copy : copies)
        entries.append(QJsonObject{{"path"_L1, copy.path},
                                   {"generation"_L1, copy.generation},
                                   {"copy"_L1, copy.copy},
                                   {"copy_sha256"_L1, copy.sha256}});
    return entries;
}

} // namespace

QString line_about(const deleted_outcome &outcome)
{
    if (outcome.is_cancelled)
        return u"deleted records: the search was cancelled; no database of them was written"_s;
    if (!outcome.failure.isEmpty())
        return u"deleted records: no database of them was written"_s;
    const QString hives = u"%1 hives searched"_s.arg(outcome.hives.size());
    if (outcome.finds == 0)
        return u"deleted records: none found, %1; no database of them was written"_s.arg(hives);
    return u"deleted records: %1 found, %2; rows made of them: %3; database: %4"_s.arg(
        QString::number(outcome.finds), hives, QString::number(outcome.rows), outcome.database);
}

QStringList warnings_about(const deleted_outcome &outcome)
{
    QStringList warnings;
    for (const searched_hive &hive : outcome.hives) {
        if (!hive.failure.isEmpty())
            warnings.append(
                u"%1: not searched for deleted records: %2"_s.arg(hive.path, hive.failure));
        if (hive.without_row > 0)
            warnings.append(u"%1: %2 deleted records would give the same rows as %3 others each, "
                            "and have none"_s.arg(hive.path, QString::number(hive.without_row),
                                                  QString::number(most_generations)));
    }
    if (outcome.rows_without_origin > 0)
        warnings.append(u"deleted records: %1 rows are left out, because it is not known of which "
                        "records they are"_s.arg(outcome.rows_without_origin));
    return warnings;
}

QJsonObject entry_of(const deleted_outcome &outcome)
{
    return without_empty({{"database"_L1, outcome.database},
                          {"finds"_L1, outcome.finds},
                          {"rows"_L1, outcome.rows},
                          {"rows_without_origin"_L1, outcome.rows_without_origin},
                          {"cancelled"_L1, outcome.is_cancelled},
                          {"failure"_L1, outcome.failure},
                          {"hives"_L1, searched_entry(outcome.hives)},
                          {"rebuilt_hives"_L1, rebuilt_entry(outcome.rebuilt)}});
}
