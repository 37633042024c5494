#ifndef RESULT_HELP_H
#define RESULT_HELP_H

#include <QString>

// What "artifact_host COMMAND --help" shows of the commands that look at results.
QString show_help_text();
QString export_help_text();
QString compare_help_text();
QString report_help_text();

#endif
