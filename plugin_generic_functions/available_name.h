#ifndef AVAILABLE_NAME_H
#define AVAILABLE_NAME_H

#include <QString>
#include <QStringList>

/// Returns the first name of NAME, "1_NAME", "2_NAME" and so on that is free in the folder: no
/// entry may be called like the name followed by one of the suffixes. Makes the folder when it is
/// absent. Empty when cancelled, even during the listing.
QString available_name(const QString &file_name, const QString &folder_path,
                       const QStringList &suffixes, const QString &function_info);

#endif
