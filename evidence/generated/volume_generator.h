#ifndef VOLUME_GENERATOR_H
#define VOLUME_GENERATOR_H

#include "byte_choices.h"
#include "evidence_volume.h"

#include <QStringList>
#include <QVariantList>

namespace evidence {

/// Fills a volume from a byte string: generated hives in the places that the plug-in reads, or
/// something else in a hive's place, and package folders with entries of all kinds and odd names.
/// Returns the accounts that a host shall name, some of which have no files. `artifacts` is as for
/// generate_hive().
QStringList generate_volume(evidence_volume &volume, byte_choices &choices,
                            const QVariantList &artifacts);

} // namespace evidence

#endif
