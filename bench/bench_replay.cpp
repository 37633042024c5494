#include "files.h"
#include "hive_builder.h"
#include "hive_padding.h"
#include "log_files.h"
#include "new_file.h"
#include "recovered_hive.h"
#include "run_meter.h"
#include "transaction_log.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <cstdio>
#include <stdexcept>

// Applies a log of many entries to a large hive and measures each step, and the reading of both
// files to compare with: bench_replay [MEGABYTES]

using namespace Qt::StringLiterals;
using namespace evidence;

namespace {

constexpr int entries = 200;
constexpr int pages_of_an_entry = 16;
constexpr quint32 first_number = 7;

struct files_to_replay
{
    QString hive;
    QString log;
};

QByteArray large_hive(int megabytes)
{
    hive_builder hive;
    pad_hive(hive, u"Padding"_s, megabytes);
    return hive.bytes();
}

/// Pages from all over the hive, as they are: what they hold does not count.
QByteArray large_log(const QByteArray &hive)
{
    const qint64 size = hive.size() - 4096;
    new_format_log log(hive, first_number);
    for (int entry = 0; entry < entries; ++entry) {
        QList<logged_page> pages;
        for (int page = 0; page < pages_of_an_entry; ++page) {
            const qint64 offset = size / 4096 * (entry * pages_of_an_entry + page) /
                                  (entries * pages_of_an_entry) * 4096;
            pages.append({offset, hive.mid(4096 + offset, 4096)});
        }
        log.pages(pages, static_cast<quint32>(size));
    }
    return log.bytes();
}

files_to_replay write_files(const QTemporaryDir &folder, int megabytes)
{
    const files_to_replay files{folder.filePath(u"SOFTWARE"_s),
                                folder.filePath(u"SOFTWARE.LOG1"_s)};
    const QByteArray hive = large_hive(megabytes);
    write_file(files.hive, numbered(hive, first_number + 1, first_number));
    write_file(files.log, large_log(hive));
    return files;
}

void require(bool is_so, const char *what)
{
    if (!is_so)
        throw std::runtime_error(what);
}

void measure(const files_to_replay &files, const QString &copy)
{
    const QList<log_input> logs{log_file(files.log, u"log"_s)};
    require(bytes_of_hive(files.hive) && logs.first().read(), "the files cannot be read");
    run_meter meter;
    {
        const auto hive = bytes_of_hive(files.hive);
        const auto log = logs.first().read();
        require(hive && log, "the files cannot be read");
    }
    meter.end_part("read both files");
    std::optional<QByteArray> hive = bytes_of_hive(files.hive);
    const replay_report report = replay_logs(*hive, logs);
    meter.end_part("replay, with the reading");
    require(report.is_replayed() && report.logs.first().entries == entries, "not replayed");
    require(key_tree(*hive).count() > 0, "no keys");
    meter.end_part("read the keys once");
    require(write_new_file(copy, *hive).isEmpty(), "the copy cannot be written");
    meter.end_part("write the copy");
    meter.print();
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const int megabytes = argc > 1 ? QByteArray(argv[1]).toInt() : 100;
    try {
        const QTemporaryDir folder;
        measure(write_files(folder, megabytes), folder.filePath(u"copy"_s));
    } catch (const std::exception &error) {
        std::fprintf(stderr, "bench_replay: %s\n", error.what());
        return 1;
    }
    return 0;
}
