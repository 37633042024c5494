#include "deleted_records.h"
#include "files.h"
#include "hive_builder.h"
#include "hive_deletion.h"
#include "hive_padding.h"
#include "log_files.h"
#include "rebuilt_hive.h"
#include "run_meter.h"

#include <QCoreApplication>
#include <QTemporaryDir>

#include <cstdio>
#include <stdexcept>

// Looks for deleted records in a large hive and measures each step, and the reading of the file to
// compare with: bench_deleted [MEGABYTES]

using namespace Qt::StringLiterals;
using namespace evidence;

namespace {

constexpr int applications = 1'000;
constexpr qint64 time_of_deletion = 134'000'000'000'000'000;

/// A hive in which every other application was removed, and one that consists of free cells but for
/// that.
QByteArray large_hive(int megabytes, bool is_mostly_free)
{
    hive_builder hive;
    hive_key &uninstall = hive.key(u"Uninstall"_s);
    for (int i = 0; i < applications; ++i)
        uninstall.key(u"Application %1"_s.arg(i))
            .text(u"DisplayName"_s, u"Application %1"_s.arg(i))
            .text(u"InstallLocation"_s, u"C:\\Program Files\\Application %1"_s.arg(i));
    pad_hive(hive, u"Padding"_s, megabytes);
    const QByteArray bytes = hive.bytes();
    hive_deletion deletion(bytes);
    for (int i = 0; i < applications; i += 2)
        deletion.key(hive_builder::offset_of(uninstall.key(u"Application %1"_s.arg(i))),
                     time_of_deletion);
    // The bins behind the end are free space, and none of their records is in use.
    QByteArray hive_bytes = deletion.bytes();
    return is_mostly_free ? hive_bytes + hive_bytes.mid(4096) : hive_bytes;
}

void require(bool is_so, const char *what)
{
    if (!is_so)
        throw std::runtime_error(what);
}

void measure(const QString &file)
{
    require(bytes_of_hive(file).has_value(), "the file cannot be read");
    run_meter meter;
    const std::optional<QByteArray> hive = bytes_of_hive(file);
    meter.end_part("read the file");
    require(hive.has_value(), "the file cannot be read");
    const deleted_records found(*hive, {{u"Uninstall"_s, 1, 1}});
    meter.end_part("look for deleted records");
    require(found.keys().size() >= applications / 2, "not all was found");
    rebuilt_hive rebuilt;
    for (const deleted_key &key : found.keys()) {
        for (const deleted_value &value : key.values)
            rebuilt.add_value(found.path_of(key), found.name_of(value), value.type,
                              found.data_of(value));
    }
    require(!rebuilt.bytes().isEmpty(), "no hive was made");
    meter.end_part("make a hive of them");
    meter.print();
}

} // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    const int megabytes = argc > 1 ? QByteArray(argv[1]).toInt() : 100;
    try {
        const QTemporaryDir folder;
        const QString file = folder.filePath(u"SOFTWARE"_s);
        write_file(file, large_hive(megabytes, false));
        measure(file);
        write_file(file, large_hive(megabytes / 2, true));
        measure(file);
    } catch (const std::exception &error) {
        std::fprintf(stderr, "bench_deleted: %s\n", error.what());
        return 1;
    }
    return 0;
}
