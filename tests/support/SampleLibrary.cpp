// A shared library for the tests to load.

extern "C"
{
    int SampleAdd(int a, int b);
    int SampleCount();
}

int SampleAdd(int a, int b)
{
    return a + b;
}

// Calls since the library was loaded.
int SampleCount()
{
    static int count = 0;
    return ++count;
}
