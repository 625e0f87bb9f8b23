#include "matcher/matching/triangle_code.h"

#include "matcher/matching/kernels/triangle_code_kernels.h"

namespace orl::matcher {

TriangleCode codeOf(const TriangleFeature& triangle) {
    return code_kernels::codeOf(triangle, QuarterTurnBearings::Table());
}

CyclicCodes cyclicCodesOf(const TriangleFeature& triangle) {
    const TriangleCode code = codeOf(triangle);
    return {code, code_kernels::turnedCode(code, 1), code_kernels::turnedCode(code, 2)};
}

}  // namespace orl::matcher
