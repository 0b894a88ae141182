// Fits polynomial mappings to control points and maps points with them.
//
//     georeference [FILE]
//
// Each line of FILE pairs a source point with its target: "sx sy tx ty", four numbers separated by white
// space. Empty lines and lines that start with "#" are ignored. Without FILE, a built-in sample is used:
// pixels of a scanned map and their positions in metres. For orders 1 to 3 the program prints the
// coefficients, the residual of each point (given minus mapped target), and the root mean square of the
// residuals, sqrt(sum of (dx^2 + dy^2) / points). Then it maps each line "x y" of standard input by the
// highest order that could be fitted. Exit code 0: done, 1: bad input, 2: wrong usage.

#include "ZelUtil/PolyApprox.h"

#include <algorithm>
#include <cmath>

#include <cstdio>
#include <fstream>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <string>

namespace
{

constexpr int kTerms[] = {0, 3, 6, 10};
constexpr const char* kTermNames[] = {"1", "x", "y", "x^2", "x y", "y^2", "x^3", "x^2 y", "x y^2", "y^3"};

// A sheet that was slightly rotated and unevenly stretched on the scanner.
constexpr const char* kSample = "# column row east north\n"
                                "  102   98  502010.4 5431989.7\n"
                                "  903  101  506012.1 5431992.3\n"
                                " 1702   97  510009.0 5431998.8\n"
                                " 2498  103  513994.2 5431990.1\n"
                                "   99  700  501998.0 5428981.2\n"
                                "  897  698  505985.6 5428995.9\n"
                                " 1700  702  509998.8 5428981.4\n"
                                " 2501  699  514006.3 5428993.2\n"
                                "  101 1301  502005.9 5425978.5\n"
                                "  900 1297  505998.3 5426004.0\n"
                                " 1699 1300  509991.7 5425992.6\n"
                                " 2500 1302  513999.5 5425979.9\n"
                                "  500  400  503993.7 5430486.0\n"
                                " 2100 1000  511998.2 5427490.8\n";

// True if the line consists of exactly `count` finite numbers.
bool ParseNumbers(const std::string& line, double* numbers, int count)
{
    std::istringstream text(line);
    for (int i = 0; i < count; ++i)
        if (!(text >> numbers[i]) || !std::isfinite(numbers[i]))
            return false;
    return (text >> std::ws).eof();
}

bool IsFinite(const REALPOINT& point)
{
    return std::isfinite(point.x) && std::isfinite(point.y);
}

bool IsBlank(const std::string& line)
{
    const std::size_t first = line.find_first_not_of(" \t\r");
    return first == std::string::npos || line[first] == '#';
}

ControlPoints ReadPoints(std::istream& input, const std::string& name)
{
    constexpr int kMaxPairs = 20;
    ControlPoints points = {};
    std::string line;
    for (int number = 1; std::getline(input, line); ++number)
    {
        if (IsBlank(line))
            continue;
        const std::string place = name + ", line " + std::to_string(number) + ": ";
        if (points.count == kMaxPairs)
            throw std::runtime_error(place + "more than 20 pairs");
        double numbers[4];
        if (!ParseNumbers(line, numbers, 4))
            throw std::runtime_error(place + "not four numbers");
        points.source[points.count] = {numbers[0], numbers[1]};
        points.target[points.count] = {numbers[2], numbers[3]};
        ++points.count;
    }
    if (input.bad())
        throw std::runtime_error(name + ": cannot be read");
    return points;
}

void PrintFit(const CPolyApprox& approx, const ControlPoints& points)
{
    const PolyCoefficients& coefficients = approx.GetCoefficients();
    std::printf("Order %d\n  %-6s %22s %22s\n", coefficients.order, "term", "x", "y");
    for (int i = 0; i < kTerms[coefficients.order]; ++i)
        std::printf("  %-6s %22.12g %22.12g\n", kTermNames[i], coefficients.xCoeff[i],
                    coefficients.yCoeff[i]);

    std::printf("  %-6s %22s %22s\n", "point", "left of x", "left of y");
    double sum = 0.0;
    for (int k = 0; k < points.count; ++k)
    {
        const REALPOINT mapped = approx.Approx(points.source[k]);
        const double dx = points.target[k].x - mapped.x, dy = points.target[k].y - mapped.y;
        std::printf("  %-6d %22.6f %22.6f\n", k + 1, dx, dy);
        sum += dx * dx + dy * dy;
    }
    std::printf("  root mean square %.6f\n", std::sqrt(sum / points.count));
}

// Whether the fit maps every source point to finite numbers; a fit that overflowed does not.
bool IsUsable(const CPolyApprox& approx, const ControlPoints& points)
{
    return std::all_of(points.source, points.source + points.count,
                       [&](const REALPOINT& p) { return IsFinite(approx.Approx(p)); });
}

// Prints every fit that succeeds and returns the one of the highest order.
CPolyApprox FitAll(const ControlPoints& points)
{
    CPolyApprox best;
    for (int order = 1; order <= 3; ++order)
    {
        CPolyApprox approx;
        if (approx.SetupPolynom(points, order) && IsUsable(approx, points))
        {
            PrintFit(approx, points);
            best = approx;
        }
        else if (points.count < 4 * order)
            std::printf("Order %d needs %d pairs, there are %d\n", order, 4 * order, points.count);
        else
            std::printf("Order %d: the points do not determine it\n", order);
    }
    if (best.GetOrder() == 0)
        throw std::runtime_error("no order could be fitted");
    return best;
}

void MapInput(const CPolyApprox& approx)
{
    std::string line;
    for (int number = 1; std::getline(std::cin, line); ++number)
    {
        if (IsBlank(line))
            continue;
        double numbers[2];
        if (!ParseNumbers(line, numbers, 2))
            throw std::runtime_error("standard input, line " + std::to_string(number) + ": not two numbers");
        const REALPOINT mapped = approx.Approx({numbers[0], numbers[1]});
        if (!IsFinite(mapped))
            throw std::runtime_error("standard input, line " + std::to_string(number) + ": too far away");

        std::printf("%.6f %.6f\n", mapped.x, mapped.y);
    }
    if (std::cin.bad())
        throw std::runtime_error("standard input cannot be read");
}

} // namespace

int main(int argc, char** argv)
{
    if (argc > 2)
    {
        std::fputs("usage: georeference [FILE] <POINTS\n", stderr);
        return 2;
    }
    try
    {
        ControlPoints points;
        if (argc == 2)
        {
            std::ifstream file(argv[1]);
            if (!file)
                throw std::runtime_error(std::string(argv[1]) + ": cannot be opened");
            points = ReadPoints(file, argv[1]);
        }
        else
        {
            std::istringstream sample(kSample);
            points = ReadPoints(sample, "sample");
        }
        MapInput(FitAll(points));
        if (std::fflush(stdout) != 0)
            throw std::runtime_error("the result cannot be written");

        return 0;
    }
    catch (const MemoryError& error)
    {
        std::fprintf(stderr, "georeference: %s: %s\n", error.getMethode().c_str(), error.getMsg().c_str());
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "georeference: %s\n", error.what());
    }
    return 1;
}
