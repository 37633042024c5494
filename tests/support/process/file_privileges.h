#ifndef FILE_PRIVILEGES_H
#define FILE_PRIVILEGES_H

namespace test_support {

/// Lets file permissions bind the program that this process executes next, even when root runs it.
/// To be called between fork() and exec(). Does nothing elsewhere than on Linux.
void drop_file_privileges();

} // namespace test_support

#endif
