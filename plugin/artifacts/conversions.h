#ifndef CONVERSIONS_H
#define CONVERSIONS_H

#include <QByteArray>
#include <QString>

// What rows make of the evidence's values. Those that loop over a whole value look at
// `is_cancelled` and then return an empty text, or 0.

/// The order of an integer's bytes.
enum class byte_order : int
{
    little_endian = 1,
    big_endian = 2
};

/// Turns an install date of the form YYYYMMDD into DD/MM/YYYY. Nothing is validated: a shorter text
/// is cut at the same places; an empty one stays empty.
QString shown_install_date(const QString &install_date);

/// Rotates the ASCII letters of a UserAssist name by 13 places, its own inverse.
QString rotated_name(QString name, const bool &is_cancelled);

/// Reads all of `bytes` as one unsigned number. 0 when that exceeds `maximum`, and for an order
/// that is none; a cancellation is looked at for little-endian bytes alone.
quint64 integer_of(const QByteArray &bytes, byte_order order, quint64 maximum,
                   const bool &is_cancelled);

/// integer_of() for the numbers that 32 bits with a sign hold.
qint32 integer_32_of(const QByteArray &bytes, byte_order order, const bool &is_cancelled);

/// integer_of() for the numbers that 64 bits with a sign hold.
qint64 integer_64_of(const QByteArray &bytes, byte_order order, const bool &is_cancelled);

/// Writes a path of the mounted source as the Windows path on drive C: as many leading characters
/// as the source's root has are cut without comparing them. Empty stays empty.
QString windows_path_of(const QString &path, const QString &source_root_path);

#endif
