// The shared object that the SharedLibrary tests load (built with default
// symbol visibility).
extern "C" int qvTestPluginAnswer()
{
    return 42;
}
