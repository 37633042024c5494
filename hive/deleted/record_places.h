#ifndef RECORD_PLACES_H
#define RECORD_PLACES_H

#include "cancel_test.h"
#include "free_space.h"

#include <QByteArrayView>
#include <QString>

#include <vector>

/// The cell of a deleted record at an offset of the file, by its own size field, as far as it lies
/// before `end`; empty if the size cannot be that of a cell. A cell in use has a negative size, and
/// one that was freed a positive one: both count.
QByteArrayView deleted_cell(QByteArrayView hive, qint64 offset, qint64 end);

/// Whether every field of a cell can be that of a key, or of a value, in a hive of that length. The
/// parent of a key does not count.
bool is_sound_key(QByteArrayView cell, qint64 hive_size);
bool is_sound_value(QByteArrayView cell, qint64 hive_size);

/// The bytes of a sound key, or value, that its fields and its name take, its size field included.
qint64 length_of_key(QByteArrayView cell);
qint64 length_of_value(QByteArrayView cell);

/// The name of a sound key, or value.
QString name_of_key(QByteArrayView cell);
QString name_of_value(QByteArrayView cell);

/// The records in free space, by their places (see free_region), in their order. None reaches into
/// another: of two that do, the first one was written over.
struct record_places
{
    std::vector<quint32> keys;
    std::vector<quint32> values;
};

/// Finds the keys and values in the free space of the hive file with these bytes.
record_places find_records(QByteArrayView hive, const free_space &space,
                           const cancel_test &cancelled);

#endif
