#include "kivlib/hdr/report_error.h"

#include "kivlib/hdr/ConsoleOStream.h"

KIVOStream& report_error(const char* file, int line)
{
    return *cerrp << file << ", line " << line << ": ";
}

KIVOStream& report_here(const char* file, int line)
{
    return report_error(KIVString(source_place(file)).c_str(), line);
}
