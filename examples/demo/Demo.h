#ifndef QVCL3_EXAMPLES_DEMO_H
#define QVCL3_EXAMPLES_DEMO_H

// Each area of the tour lives in a file of its own (examples/demo/<Area>Demo.cpp)
// and is called from main() in the order of the list below.
#include <qv/qvcl3.h>

#include <string>

void section(const char* title);
std::string utf8(const char16_t* text);

void demoRuntimeCore();
void demoStrings();
void demoNumbers();
void demoEncodings();
void demoCollections();
void demoIo();
void demoTextIo();
void demoExec();
void demoCrypto();
void demoNet();
void demoModules();
void demoConfiguration(int argc, const char* const* argv);
void demoI18n();
void demoLog();

#endif
