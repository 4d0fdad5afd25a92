#include "kivlib/hdr/prepare_process.h"

#include <csignal>
#include <fcntl.h>
#include <initializer_list>
#include <unistd.h>

void prepare_process()
{
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (::fcntl(descriptor, F_GETFD) < 0)
            ::open("/dev/null", O_RDWR); // takes the lowest that is free
    ::signal(SIGXFSZ, SIG_IGN);
}
