#ifndef INTACT_HIVES_H
#define INTACT_HIVES_H

#include "hive_generator.h"

#include <QByteArray>
#include <QList>
#include <QString>
#include <functional>

namespace evidence {

/// A large hive of some shape that takes long to read, although no part of it is shared.
struct intact_hive
{
    QString name;
    hive_kind kind;
    QString table;                    ///< that the shape is about
    std::function<QByteArray()> make; ///< returns the bytes of the hive
};

/// Shapes that Windows writes, or that anybody with a user's rights can have it write, as large as
/// libhivex reads them, and the three that a reader may take for shared data.
QList<intact_hive> intact_hives();

} // namespace evidence

#endif
