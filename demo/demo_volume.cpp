#include "demo_volume.h"

#include "demo_parts.h"

namespace demo {

QStringList write_demo_volume(const QString &folder)
{
    evidence::evidence_volume volume(folder);
    add_system(volume);
    add_software(volume);
    add_users(volume);
    add_packages(volume);
    add_programs(volume);
    volume.write();
    write_logs(volume);
    write_deletions(volume);
    return volume.accounts();
}

} // namespace demo
