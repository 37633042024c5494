#ifndef DEMO_VOLUME_H
#define DEMO_VOLUME_H

#include <QString>
#include <QStringList>

namespace demo {

/// Writes a Windows volume with invented users and realistic applications into a folder, which is
/// made when absent; always the same bytes. Throws std::runtime_error when a file cannot be
/// written. Returns the accounts in the order of their creation.
QStringList write_demo_volume(const QString &folder);

} // namespace demo

#endif
