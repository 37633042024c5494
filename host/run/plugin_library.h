#ifndef PLUGIN_LIBRARY_H
#define PLUGIN_LIBRARY_H

#include <QString>

#include <memory>

#include "artifact_plugin_interface.h"

/// The names of the progress signals, as SIGNAL() writes them.
#define RECORDS_SIGNAL SIGNAL(signal_extracted_records_of_plugin_overall(qint64))
#define TABS_SIGNAL SIGNAL(signal_tab_processed_of_plugin_overall(int))

/// A plug-in object, or why there is none.
struct loaded_plugin
{
    std::unique_ptr<artifact_plugin> object;
    QString failure;
    QString file = {}; ///< where the library lies
};

/// Loads the library at `file` and lets it create its object. When `file` is empty, takes the
/// library that lies beside the program, in ../plugin (as built), where it is installed, or in
/// ../lib. The library stays loaded until the process ends. Needs a QApplication.
loaded_plugin load_plugin(const QString &file);

#endif
