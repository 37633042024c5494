#ifndef DELETED_TEXTS_H
#define DELETED_TEXTS_H

#include <QString>

#include "deleted_records.h"

/// How sure a find is: "whole", or "partial: " and what is missing. A value has the key with it,
/// which may not be known.
QString state_of(const deleted_key &key);
QString state_of(const deleted_value &value, const deleted_key &key);

/// How far a path is known, in one word.
QString text_of(path_state state);

/// The data of a value as text: texts by their type, numbers in decimal, other data in hexadecimal
/// digits. Long ones are cut.
QString text_of_data(quint32 type, const QByteArray &data);

/// Unix seconds of a FILETIME; 0 for one that no machine can have written.
qint64 unix_seconds_of(quint64 filetime);

#endif
