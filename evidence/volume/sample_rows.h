#ifndef SAMPLE_ROWS_H
#define SAMPLE_ROWS_H

#include "evidence_volume.h"

#include <QVariantList>

namespace evidence {

/// How many rows add_sample_rows() gives each table.
constexpr qint64 sample_row_count = 3;

/// Adds evidence for every artefact that the plug-in describes in its property "artifacts". Of the
/// rows of a users' table two are of the account "ann" and one is of "bob".
///
/// An artefact whose records need values of their own shape has them written here. Any other gets
/// three values, or three subkeys with a value, in the key that it describes.
void add_sample_rows(evidence_volume &volume, const QVariantList &artifacts);

} // namespace evidence

#endif
