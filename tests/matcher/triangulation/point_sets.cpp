#include "tests/matcher/triangulation/point_sets.h"

#include <cstddef>

namespace orl::test {

namespace {

using Points = std::vector<double>;

int Below(std::mt19937& random, int limit) {
    return static_cast<int>(random() % static_cast<unsigned>(limit));
}

int Between(std::mt19937& random, int least, int most) {
    return least + Below(random, most - least + 1);
}

void Add(Points& points, int x, int y) {
    points.push_back(x);
    points.push_back(y);
}

Points DrawInBox(std::mt19937& random, int count, int width, int height, int origin = 0) {
    Points points;
    for (int i = 0; i < count; ++i) {
        const int x = origin + Below(random, width);
        Add(points, x, origin + Below(random, height));
    }
    return points;
}

Points Finger(std::mt19937& random) {
    return DrawInBox(random, Between(random, 20, 128), 388, 374);
}

Points Few(std::mt19937& random) {
    return DrawInBox(random, Between(random, 3, 8), 30, 30);
}

Points WholeRecordRange(std::mt19937& random) {
    return DrawInBox(random, Between(random, 3, 60), 16384, 16384);
}

Points Negative(std::mt19937& random) {
    return DrawInBox(random, Between(random, 3, 60), 400, 400, -1000);
}

Points AroundZero(std::mt19937& random) {
    return DrawInBox(random, Between(random, 3, 60), 400, 400, -200);
}

Points DenseGrid(std::mt19937& random) {
    return DrawInBox(random, Between(random, 5, 60), 6, 6);
}

Points Lattice(std::mt19937& random) {
    Points points;
    const int columns = Between(random, 2, 11);
    const int rows = Between(random, 2, 11);
    const int step = Between(random, 1, 30);
    for (int row = 0; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            Add(points, column * step, row * step);
        }
    }
    return points;
}

Points ShearedLattice(std::mt19937& random) {
    Points points;
    const int shear = Between(random, 1, 6);
    for (int row = 0; row < 8; ++row) {
        for (int column = 0; column < 8; ++column) {
            Add(points, 7 * column + shear * row, 9 * row);
        }
    }
    return points;
}

// Whole-number points on one circle: 65^2 = 16^2 + 63^2 = 25^2 + 60^2 = 33^2 + 56^2 = 39^2 + 52^2.
Points Cocircular(std::mt19937& random) {
    constexpr int kOnCircle[][2] = {{65, 0}, {63, 16}, {60, 25}, {56, 33}, {52, 39}};
    Points points;
    const int count = Between(random, 3, 40);
    for (int i = 0; i < count; ++i) {
        const auto& [major, minor] = kOnCircle[Below(random, 5)];
        const bool turned = Below(random, 2) == 1;
        const int x = turned ? minor : major;
        const int y = turned ? major : minor;
        const bool left = Below(random, 2) == 1;
        const bool up = Below(random, 2) == 1;
        Add(points, left ? -x : x, up ? -y : y);
    }
    if (Below(random, 2) == 1) {
        Add(points, 0, 0);
    }
    return points;
}

Points Clustered(std::mt19937& random) {
    Points points;
    const int clusters = Between(random, 2, 6);
    for (int cluster = 0; cluster < clusters; ++cluster) {
        const int x = Below(random, 3000);
        const int y = Below(random, 3000);
        const int size = Between(random, 3, 20);
        for (int i = 0; i < size; ++i) {
            const int dx = Below(random, 5);
            Add(points, x + dx, y + Below(random, 5));
        }
    }
    return points;
}

Points Duplicated(std::mt19937& random) {
    Points points = DrawInBox(random, Between(random, 3, 30), 300, 300);
    const int copies = Between(random, 1, 60);
    for (int i = 0; i < copies; ++i) {
        const auto original = static_cast<std::size_t>(Below(random, 30)) % (points.size() / 2);
        const double x = points[2 * original];
        const double y = points[2 * original + 1];
        points.push_back(x);
        points.push_back(y);
    }
    return points;
}

Points LineAndOnePoint(std::mt19937& random) {
    Points points;
    const int dx = Between(random, -5, 5);
    const int dy = Between(random, 1, 5);
    const int count = Between(random, 2, 40);
    for (int i = 0; i < count; ++i) {
        const int step = Below(random, 100);
        Add(points, 500 + dx * step, dy * step);
    }
    Add(points, Below(random, 1000), Below(random, 1000));
    return points;
}

Points NearlyHorizontal(std::mt19937& random) {
    return DrawInBox(random, Between(random, 4, 12), 40, 3);
}

Points LongThin(std::mt19937& random) {
    return DrawInBox(random, Between(random, 4, 20), 16384, 3);
}

Points NearlySlanted(std::mt19937& random) {
    Points points;
    const int count = Between(random, 4, 30);
    for (int i = 0; i < count; ++i) {
        const int x = Below(random, 4000);
        Add(points, x, x / 3 + Below(random, 3));
    }
    return points;
}

Points OnAParabola(std::mt19937& random) {
    Points points;
    const int count = Between(random, 3, 60);
    for (int i = 0; i < count; ++i) {
        const int x = Between(random, -60, 60);
        Add(points, x, x * x);
    }
    return points;
}

constexpr PointSetFamily kFamilies[] = {
    {"a finger's minutiae", Finger, 1000, 0},
    {"few points", Few, 8000, 1},
    {"the whole range of a record", WholeRecordRange, 2000, 1},
    {"every coordinate negative", Negative, 1500, 1},
    {"around zero", AroundZero, 1500, 1},
    {"a dense grid with many copies", DenseGrid, 2500, 1},
    {"a full lattice", Lattice, 500, 0},
    {"a sheared lattice", ShearedLattice, 6, 0},
    {"on one circle", Cocircular, 2000, 0},
    {"clusters", Clustered, 1500, 1},
    {"many copies", Duplicated, 1500, 1},
    {"a line and one point", LineAndOnePoint, 2000, 0},
    {"nearly a horizontal line", NearlyHorizontal, 8000, 8},
    {"a long thin strip", LongThin, 2000, 6},
    {"nearly a slanted line", NearlySlanted, 2000, 6},
    {"on a parabola", OnAParabola, 1500, 0},
};

}  // namespace

std::ostream& operator<<(std::ostream& out, const PointSetFamily& family) {
    return out << family.name;
}

std::span<const PointSetFamily> PointSetFamilies() {
    return kFamilies;
}

}  // namespace orl::test
