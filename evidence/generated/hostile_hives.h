#ifndef HOSTILE_HIVES_H
#define HOSTILE_HIVES_H

#include "hive_generator.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <functional>

namespace evidence {

/// A hive of up to 10 MB that libhivex opens and whose parts are listed so often that reading all
/// it claims would take hours and more memory than there is.
struct hostile_hive
{
    QString name;                     ///< what is hostile about it
    hive_kind kind;                   ///< where it must stand to be read
    std::function<QByteArray()> make; ///< returns the bytes of the hive
};

/// All of them; they are made when asked for.
QList<hostile_hive> hostile_hives();

} // namespace evidence

#endif
