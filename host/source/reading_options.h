#ifndef READING_OPTIONS_H
#define READING_OPTIONS_H

#include <QString>
#include <QVariantMap>

/// What a run asks of the plug-in beyond what every host gets; docs/host_integration.md tells the
/// effects. Logs are applied by this program, and the plug-in gets the copies to read.
struct reading_options
{
    bool ignore_letter_case = false;
    bool decode_by_type = false;
    bool installations_of_users = false;
    bool old_layout = false;
    bool replay_logs = false;

    /// All of them, which is what a run without further word asks for.
    static reading_options all() { return {true, true, true, true, true}; }
};

/// The options as the property of the plug-in object takes them. Every run asks besides that hives
/// are kept open, which changes no row and no line of the log, and that the log says what of them
/// cannot be read.
QVariantMap property_of(const reading_options &options);

/// One line for the end of a run that tells which options were set.
QString line_about(const reading_options &options);

#endif
