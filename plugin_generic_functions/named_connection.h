#ifndef NAMED_CONNECTION_H
#define NAMED_CONNECTION_H

#include <QSqlDatabase>
#include <QString>
#include <QStringView>

/// Returns a text with memory of its own. Qt's lists of connections outlive this library when the
/// host unloads it, and what they keep of a literal is a pointer into the library.
QString heap_copy(QStringView text);

/// Replaces the connection of that name by a new one to an SQLite file and opens it; the caller
/// finds out by isOpen() whether it opened. `options` are Qt's connect options.
QSqlDatabase open_named_connection(const QString &name, const QString &db_path,
                                   const QString &options = {});

#endif
