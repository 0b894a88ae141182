#include <ZelUtil/PolyApprox.h>

#include <cstdio>

int main()
{
    // Corners of a scanned sheet, in pixels, and where they are, in metres.
    ControlPoints points = {};
    points.count = 4;
    const REALPOINT source[] = {{0.0, 0.0}, {100.0, 0.0}, {0.0, 80.0}, {100.0, 80.0}};
    const REALPOINT target[] = {{5000.0, 9000.0}, {5200.0, 9000.0}, {5000.0, 8840.0}, {5200.0, 8840.0}};
    for (int i = 0; i < points.count; ++i)
    {
        points.source[i] = source[i];
        points.target[i] = target[i];
    }

    CPolyApprox approx;
    if (!approx.SetupPolynom(points, 1)) // order 1 needs at least 4 pairs
        return 1;
    const REALPOINT middle = approx.Approx({50.0, 40.0});
    std::printf("%.3f %.3f\n", middle.x, middle.y);
    std::printf("order 2 with 4 pairs: %s\n", approx.SetupPolynom(points, 2) ? "true" : "false");
    return 0;
}
