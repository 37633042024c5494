#ifndef USER_ASSIST_H
#define USER_ASSIST_H

#include <QByteArray>
#include <QString>

namespace evidence {

/// The name with every ASCII letter 13 places further on, as UserAssist stores names; applied
/// twice it gives the name again.
QString rotated_name(QString name);

/// The 72 bytes of a UserAssist value as Windows 7 and later write them. `last_run_filetime` 0
/// means that the time is not known.
QByteArray user_assist_data(quint32 run_count, qint64 last_run_filetime);

} // namespace evidence

#endif
