#include "hive_precheck.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include "guarded_hive.h"
#include "hive_base_block.h"
#include "log_files.h"
#include "regf_format.h"

using namespace Qt::StringLiterals;

namespace {

QStringList neighbours_of(const QFileInfo &file)
{
    return file.dir().entryList(QDir::AllEntries | QDir::Hidden | QDir::System, QDir::Name);
}

/// Windows ignores letter case; most file systems to which evidence is extracted do not.
QString absence_of(const QFileInfo &hive)
{
    if (hive.isSymLink())
        return u"not found: a link leads nowhere"_s;
    for (const QString &entry : neighbours_of(hive)) {
        if (entry.compare(hive.fileName(), Qt::CaseInsensitive) == 0)
            return u"not found, and %1 beside it is not read: its letter case differs"_s.arg(entry);
    }
    return u"not found"_s;
}

hive_findings unreadable(const QString &reason)
{
    hive_findings findings;
    findings.warnings.append(reason);
    findings.readable = false;
    return findings;
}

/// A file in other letter case lies there, and so does a link.
hive_findings absent(const QFileInfo &hive)
{
    hive_findings findings = unreadable(absence_of(hive));
    findings.is_absent = findings.warnings.first() == "not found"_L1;
    return findings;
}

void append_size_finding(const hive_base_block &base_block, qint64 file_size,
                         hive_findings &findings)
{
    findings.is_cut_off = base_block.is_cut_off(file_size);
    if (findings.is_cut_off)
        findings.warnings.append(
            u"cut off: its header tells %1 bytes, the file has %2; what is missing is not read"_s
                .arg(base_block.told_length())
                .arg(file_size));
}

void append_sequence_finding(const hive_base_block &base_block, const QFileInfo &file,
                             hive_findings &findings)
{
    if (!base_block.is_dirty())
        return;
    const QStringList logs = logs_beside(file.filePath());
    findings.is_dirty = true;
    findings.transaction_logs = logs;
    const QString advice = logs.isEmpty()
                               ? u"no transaction log lies beside it"_s
                               : u"the changes in %1 are not applied"_s.arg(logs.join(", "_L1));
    findings.warnings.append(
        u"not closed cleanly (sequence numbers %1 and %2), so it may be out of date; %3"_s
            .arg(base_block.primary_sequence())
            .arg(base_block.secondary_sequence())
            .arg(advice));
}

hive_findings check_base_block(const hive_base_block &base_block, const QFileInfo &file)
{
    if (!base_block.is_of_a_hive())
        return unreadable(u"not a registry hive, so it is not read"_s);
    if (!base_block.is_checksum_right())
        return unreadable(u"its header is damaged (wrong checksum), so it is not read"_s);
    if (base_block.ends_within_a_bin_head(file.size()))
        return unreadable(u"cut off within the head of a bin, so it is not read"_s);
    hive_findings findings;
    append_size_finding(base_block, file.size(), findings);
    append_sequence_finding(base_block, file, findings);
    return findings;
}

/// Appends the findings about the volume's hive, each with its path.
void append_findings(const hive_findings &hive, const QString &path, bool is_left_out,
                     QList<finding> &findings)
{
    for (const QString &warning : hive.warnings)
        findings.append(finding(path + ": "_L1 + warning, is_left_out));
}

void append_user_findings(const source_volume &volume, const QString &path,
                          QList<finding> &findings)
{
    const hive_findings hive = check_hive_file(volume.file_of(path));
    append_findings(hive, path, !hive.is_whole() && !hive.is_absent, findings);
}

bool has_usable_backup(const source_volume &volume)
{
    return check_hive_file(volume.file_of(volume.software_backup())).readable;
}

void append_software_findings(const source_volume &volume, const QString &hive_to_read,
                              QList<finding> &findings)
{
    const hive_findings hive = check_hive_file(volume.file_of(volume.software_hive()));
    append_findings(hive, volume.software_hive(), !hive.is_whole(), findings);
    if (hive_to_read == volume.software_hive())
        return;
    const hive_findings backup = check_hive_file(volume.file_of(volume.software_backup()));
    append_findings(backup, volume.software_backup(), !backup.is_whole(), findings);
    if (backup.readable)
        findings.append(volume.software_backup() +
                        ": is read in place of the software hive, which cannot be opened"_L1);
}

void append_package_folder_finding(const source_volume &volume, const QString &path,
                                   QList<finding> &findings)
{
    const QFileInfo folder(volume.root() + path);
    const bool is_listable = folder.isReadable() && folder.isExecutable();
    if (is_hidden(folder.filePath()) || (folder.isDir() && !is_listable))
        findings.append(path + ": cannot be listed: Permission denied"_L1);
}

} // namespace

hive_findings check_hive_file(const QString &path)
{
    const QFileInfo info(path);
    if (is_hidden(path))
        return unreadable(u"cannot be read: Permission denied"_s);
    if (!info.exists())
        return absent(info);
    if (!info.isFile())
        return unreadable(u"not a regular file, so it is not read"_s);
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return unreadable(u"cannot be read: %1"_s.arg(file.errorString()));
    const hive_base_block base_block(file.read(regf::base_block::size));
    if (!base_block.is_whole())
        return unreadable(u"too short for a hive (%1 bytes), so it is not read"_s.arg(info.size()));
    return check_base_block(base_block, info);
}

// Most Windows versions keep the backup empty, so trying to open the hive is rarely needed.
QString software_hive_to_read(const source_volume &volume)
{
    const QString hive = volume.file_of(volume.software_hive());
    const bool is_read =
        check_hive_file(hive).readable && (!has_usable_backup(volume) || guarded_hive().open(hive));
    return is_read ? volume.software_hive() : volume.software_backup();
}

QList<finding> precheck_warnings(const source_volume &volume, const QString &software_hive,
                                 const QStringList &accounts, const QList<host_tab> &tabs)
{
    QList<finding> findings;
    if (any_reads(tabs, tab_input::software_hive))
        append_software_findings(volume, software_hive, findings);
    if (reads_user_hives(tabs)) {
        for (const QString &account : accounts)
            append_user_findings(volume, volume.user_hive(account), findings);
    }
    if (any_reads(tabs, tab_input::package_folder)) {
        for (const QString &account : accounts)
            append_package_folder_finding(volume, volume.package_folder(account), findings);
    }
    return findings;
}
