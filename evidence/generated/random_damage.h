#ifndef RANDOM_DAMAGE_H
#define RANDOM_DAMAGE_H

#include "byte_choices.h"
#include "grown_hive.h"
#include "hive_damage.h"

#include <QStringList>

namespace evidence {

/// Does up to eight damages to the bytes of a grown hive: which ones, where and how much follows
/// from the choices, none when they are used up. Returns their names.
QStringList damage_by_choices(hive_damage &damage, const grown_hive &hive, byte_choices &choices);

/// The names of all damages.
QStringList all_damages();

} // namespace evidence

#endif
