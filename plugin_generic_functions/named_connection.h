#ifndef NAMED_CONNECTION_H
#define NAMED_CONNECTION_H

#include <QSqlDatabase>
#include <QString>
#include <QStringView>

/// Returns a copy of the text on the heap. Qt's lists of connections outlive this library when the
/// host unloads it; of a literal they keep a pointer into the library.
QString heap_copy(QStringView text);

/// Replaces the connection of that name by a new one to an SQLite file and opens it. isOpen() of
/// the connection knows whether that worked. `options` are Qt's connect options.
QSqlDatabase open_named_connection(const QString &name, const QString &db_path,
                                   const QString &options = {});

#endif
