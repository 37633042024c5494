#include "demo_parts.h"
#include "files.h"
#include "transaction_log.h"
#include "user_assist.h"

namespace demo {

using namespace Qt::StringLiterals;
using namespace evidence;

namespace {

const auto account_of_logs = u"marek"_s;
constexpr quint32 number_of_hive = 211; // of its last whole state

hive_key &count_key(evidence_volume &volume)
{
    return volume.user(account_of_logs)
        .key(
            u"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\UserAssist\\{CEBFF5CD-ACE2-4F4F-9178-9926F41749EA}\\Count"_s);
}

/// The user's hive after a program was run once more.
QByteArray after_run_of(evidence_volume &volume, const QString &program, qint64 unix_seconds)
{
    count_key(volume).binary(rotated_name(program),
                             user_assist_data(1, filetime_of_unix(unix_seconds)));
    return volume.user(account_of_logs).bytes();
}

} // namespace

void write_logs(evidence_volume &volume)
{
    const QByteArray hive = volume.user(account_of_logs).bytes();
    const QByteArray first =
        after_run_of(volume, u"E:\\tools\\shredder\\shredder.exe"_s, 1703233466);
    const QByteArray second = after_run_of(
        volume, u"{7C5A40EF-A0FB-4BFC-874A-C0F2E0B9FA8E}\\Tidewater VPN\\uninstall.exe"_s,
        1703233702);
    const QString path = volume.ntuser_path(account_of_logs);
    write_file(path, numbered(hive, number_of_hive + 1, number_of_hive));
    new_format_log log_1(hive, number_of_hive);
    write_file(path + ".LOG1"_L1, log_1.change(hive, first).bytes());
    new_format_log log_2(first, log_1.next_sequence());
    write_file(path + ".LOG2"_L1, log_2.change(first, second).bytes());
}

} // namespace demo
