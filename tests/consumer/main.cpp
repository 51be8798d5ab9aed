#include <qv/qvcl3.h>

#include <cstdio>
#include <cstring>

int main()
{
    const char* version = QVCL3Version();
    std::printf("consumer linked qvcl3 %s\n", version);
    return std::strcmp(version, "3.0.0") == 0 ? 0 : 1;
}
