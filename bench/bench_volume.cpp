#include "bench_volume.h"

#include "bench_hives.h"
#include "evidence_volume.h"

using namespace Qt::StringLiterals;
using namespace evidence;

namespace {

constexpr qint64 program_time = 1690000000; // 2023-07-22T04:26:40Z
/// Each fourth of the store's programs is still on the volume; the others are gone.
constexpr int present_programs = 4;

const QString account = u"ann"_s;

void add_programs(evidence_volume &volume, int store)
{
    for (int index = 0; index < store; index += present_programs) {
        const QString path = store_program(index).mid(3).replace(u'\\', u'/');
        volume.file(path, {}, program_time + index);
    }
}

/// Makes empty files instead of folders, because each folder takes a block of the disk. The plug-in
/// lists the entries and never opens them.
void add_packages(evidence_volume &volume, int count)
{
    volume.package(account, {});
    const QString folder = u"Users/"_s + account + u"/AppData/Local/Packages/"_s;
    for (int index = 0; index < count; ++index)
        volume.file(folder + u"Vendor%1.Product%2_8wekyb3d8bbwe"_s.arg(index % 90).arg(index));
}

} // namespace

void write_bench_volume(const QString &folder, const volume_sizes &sizes)
{
    evidence_volume volume(folder);
    volume.system();
    fill_software(volume.software(), sizes);
    fill_user(volume.user(account), sizes);
    volume.write();
    add_programs(volume, sizes.store);
    add_packages(volume, sizes.packages);
}
