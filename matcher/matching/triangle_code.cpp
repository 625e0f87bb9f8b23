#include "matcher/matching/triangle_code.h"

#include "matcher/matching/kernels/triangle_code_kernels.h"

namespace orl::matcher {

TriangleCode codeOf(const TriangleFeature& triangle) {
    return code_kernels::codeOf(triangle, QuarterTurnBearings::Table());
}

}  // namespace orl::matcher
