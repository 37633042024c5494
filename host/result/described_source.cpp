#include "described_source.h"

#include <QDateTime>
#include <QFileInfo>
#include <QJsonArray>

#include <algorithm>
#include <optional>

#include "read_files.h"

using namespace Qt::StringLiterals;

namespace {

/// Whether the hives of a run and of this source have the same content; nothing when no hive of
/// both can be compared.
std::optional<bool> has_same_hives(const QJsonObject &run, const described_source &source)
{
    std::optional<bool> is_same;
    for (const QJsonValue value : run.value("files"_L1).toArray()) {
        const QJsonObject file = value.toObject();
        const QString earlier = file.value("sha256_before"_L1).toString();
        const QString now = source.hashes.value(file.value("path"_L1).toString());
        if (!earlier.isEmpty() && !now.isEmpty())
            is_same = is_same.value_or(true) && earlier == now;
    }
    return is_same;
}

/// Whether a recorded path can be looked at: a forged one leads anywhere.
bool is_within(const source_volume &volume, const QString &relative)
{
    return !relative.isEmpty() && !relative.split(u'/').contains(".."_L1) &&
           !volume.leads_out(relative);
}

bool is_same_time(const QString &recorded, const QDateTime &now)
{
    return QDateTime::fromString(recorded, Qt::ISODateWithMs).toMSecsSinceEpoch() ==
           now.toMSecsSinceEpoch();
}

/// Whether a recorded hive or folder is missing or was changed at another time. A record has no
/// time of what could not be looked at.
bool is_missing_or_changed(const QJsonObject &recorded, const QFileInfo &now)
{
    const QString modified = recorded.value("modified"_L1).toString();
    return !now.exists() || (!modified.isEmpty() && !is_same_time(modified, now.lastModified()));
}

bool is_another_hive(const QJsonObject &recorded, const QFileInfo &now)
{
    return recorded.contains("modified"_L1) &&
           (is_missing_or_changed(recorded, now) ||
            now.size() != recorded.value("size"_L1).toInteger());
}

bool is_another_folder(const QJsonObject &recorded, const QFileInfo &now)
{
    return is_missing_or_changed(recorded, now) ||
           entries_in(now.filePath()) != recorded.value("entries"_L1).toInteger();
}

using comparison = bool (*)(const QJsonObject &recorded, const QFileInfo &now);

/// Whether any entry of the list tells of something else than what lies at its path now. What the
/// examiner lacks the permission to look at contradicts nothing.
bool is_any_another(const QJsonArray &list, const source_volume &volume, comparison is_another)
{
    return std::any_of(list.begin(), list.end(), [&](const QJsonValue &value) {
        const QJsonObject recorded = value.toObject();
        const QString relative = recorded.value("path"_L1).toString();
        const QString path = volume.root() + relative;
        return is_within(volume, relative) && !is_hidden(path) &&
               is_another(recorded, QFileInfo(path));
    });
}

bool is_any_account_missing(const QJsonArray &accounts, const source_volume &volume)
{
    return std::any_of(accounts.begin(), accounts.end(), [&volume](const QJsonValue &account) {
        const QString folder = volume.account_folder(account.toString());
        return is_within(volume, folder) && !volume.holds(folder) &&
               !is_hidden(volume.root() + folder);
    });
}

bool is_contradicted(const QJsonObject &run, const source_volume &volume)
{
    const QJsonArray accounts = run.value("options"_L1).toObject().value("accounts"_L1).toArray();
    return is_any_another(run.value("files"_L1).toArray(), volume, is_another_hive) ||
           is_any_another(run.value("package_folders"_L1).toArray(), volume, is_another_folder) ||
           is_any_account_missing(accounts, volume);
}

bool is_at_same_place(const QJsonObject &run, const source_volume &volume)
{
    return volume_of(run) == volume.root();
}

} // namespace

QString volume_of(const QJsonObject &run)
{
    return run.value("source"_L1).toObject().value("volume"_L1).toString();
}

bool is_of_source(const QJsonObject &run, const described_source &source)
{
    if (const auto is_same = has_same_hives(run, source))
        return *is_same;
    return is_at_same_place(run, source.volume) && !is_contradicted(run, source.volume);
}
