#ifndef ACCOUNT_FOLDERS_H
#define ACCOUNT_FOLDERS_H

#include <QList>

#include "finding.h"
#include "source_volume.h"

/// What to know of the folders that hold those of the accounts: those that are not read although
/// accounts lie in them, a link that leads nowhere, and that there is none beside a folder of
/// Windows.
QList<finding> passed_over_account_folders(const source_volume &volume);

#endif
