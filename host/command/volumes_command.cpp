#include "volumes_command.h"

#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QTimeZone>

#include "account_selection.h"
#include "console.h"
#include "hive_base_block.h"
#include "hive_precheck.h"
#include "passed_over.h"
#include "raw_names.h"
#include "regf_format.h"
#include "volume_search.h"

using namespace Qt::StringLiterals;

namespace {

/// One tab of each input: what a run of all tabs would read.
QList<host_tab> every_input()
{
    return {{{}, tab_input::software_hive, false},
            {{}, tab_input::user_hive, false},
            {{}, tab_input::package_folder, false}};
}

/// Years of more digits, which only forged headers tell, have no text.
QString shown_time(const QDateTime &time)
{
    const QString text = time.toUTC().toString(Qt::ISODate);
    return text.isEmpty() ? u"unknown"_s : text;
}

QDateTime time_of(quint64 filetime)
{
    constexpr quint64 ticks_per_millisecond = 10'000;
    const QDateTime epoch(QDate(1601, 1, 1), QTime(0, 0), QTimeZone::utc());
    return epoch.addMSecs(qint64(filetime / ticks_per_millisecond));
}

/// When Windows wrote the hive last, by its header.
QString time_in_header(const QString &hive_file)
{
    QFile file(hive_file);
    if (!QFileInfo(hive_file).isFile() || !file.open(QIODevice::ReadOnly))
        return u"unknown"_s;
    const hive_base_block base_block(file.read(regf::base_block::size));
    const bool is_told =
        base_block.is_whole() && base_block.is_of_a_hive() && base_block.last_written() != 0;
    return is_told ? shown_time(time_of(base_block.last_written())) : u"unknown"_s;
}

QString facts_of_hive(const QString &hive_file)
{
    const hive_findings findings = check_hive_file(hive_file);
    QString state =
        findings.warnings.isEmpty() ? u"closed cleanly"_s : findings.warnings.join("; "_L1);
    const QFileInfo info(hive_file);
    if (!info.isFile() || is_hidden(hive_file))
        return state;
    return u"%1 bytes, changed %2, written by Windows %3, %4"_s.arg(
        QString::number(info.size()), shown_time(info.lastModified()), time_in_header(hive_file),
        state);
}

QString hive_line(const source_volume &volume, const QString &path)
{
    if (volume.leads_out(path))
        return u"hive %1: a link leads out of the source"_s.arg(path);
    return u"hive %1: %2"_s.arg(path, facts_of_hive(volume.root() + path));
}

QStringList software_lines(const source_volume &volume)
{
    QStringList lines{hive_line(volume, volume.software_hive())};
    if (!volume.leads_out(volume.software_hive()) && !volume.leads_out(volume.software_backup()) &&
        software_hive_to_read(volume) != volume.software_hive() &&
        volume.holds(volume.software_backup()))
        lines.append(hive_line(volume, volume.software_backup()));
    return lines;
}

QStringList account_lines(const source_volume &volume, const QString &account)
{
    QStringList lines{"account "_L1 + account};
    lines.append("  "_L1 + hive_line(volume, volume.user_hive(account)));
    const QString folder = volume.package_folder(account);
    qsizetype count = 0;
    const std::error_code error =
        for_each_raw_name(volume.root() + folder, [&](QByteArrayView raw_name) {
            if (is_utf_8(raw_name))
                ++count;
        });
    if (!error)
        lines.append(u"  packages %1: %2"_s.arg(folder, QString::number(count)));
    return lines;
}

void list_volume(const found_volume &found, const volumes_options &options)
{
    const source_volume volume(found.directory, options.reading, options.source);
    const account_selection selection = select_accounts(volume, {});
    QStringList lines{u"volume %1: %2"_s.arg(found.name, volume.root())};
    for (const QString &line : software_lines(volume))
        lines.append("  "_L1 + line);
    for (const QString &account : selection.accounts) {
        for (const QString &line : account_lines(volume, account))
            lines.append("  "_L1 + line);
    }
    for (const QString &line : std::as_const(lines))
        write_line(stdout, printable(line));
    print_warnings(selection.warnings + selection.remarks +
                   texts_of(passed_over_warnings(volume, selection, every_input())));
}

} // namespace

exit_code list_volumes(const volumes_options &options)
{
    if (const auto refused = check_source(options.source))
        return refuse(*refused);
    QList<found_volume> volumes;
    if (options.volume.isEmpty()) {
        const volume_search search = find_volumes(options.source);
        print_warnings(search.warnings);
        volumes = search.volumes;
    } else {
        const chosen_volume chosen = choose_volume(options.source, options.volume);
        print_warnings(chosen.warnings);
        if (chosen.refused)
            return refuse(*chosen.refused);
        volumes = {chosen.volume};
    }
    if (volumes.isEmpty())
        return refuse({exit_source, u"source %1 holds no Windows volume"_s.arg(options.source)});
    for (const found_volume &volume : std::as_const(volumes))
        list_volume(volume, options);
    return exit_complete;
}
