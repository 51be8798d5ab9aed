#include <qv/qvcl3.h>

#include <cstdio>

int main()
{
    std::printf("qvcl3 %s\n", QVCL3Version());
    return 0;
}
