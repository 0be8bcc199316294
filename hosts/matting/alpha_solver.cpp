// The conjugate gradients are the library's. They solve for the change of the start, so that the fixed
// pixels are zero in them, and their sums are taken in one order on every machine: the build forbids
// the library its vector instructions.
#include "matting/alpha_solver.h"

#include <Eigen/IterativeLinearSolvers>
#include <algorithm>
#include <cmath>

class AlphaSystem;

namespace Eigen::internal {
template <>
struct traits<AlphaSystem> : traits<SparseMatrix<float>> {};
}  // namespace Eigen::internal

// What the solver multiplies with: rows of pixels that are not inner give zero.
class AlphaSystem : public Eigen::EigenBase<AlphaSystem> {
  public:
    using Scalar = float;
    using RealScalar = float;
    using StorageIndex = int;
    enum {
        ColsAtCompileTime = Eigen::Dynamic,
        MaxColsAtCompileTime = Eigen::Dynamic,
        IsRowMajor = 0
    };

    AlphaSystem(const MattingLaplacian& laplacian, const std::vector<float>& weight,
                const std::function<void()>& checkpoint)
        : m_laplacian(laplacian), m_weight(weight), m_checkpoint(checkpoint) {}

    Eigen::Index rows() const { return static_cast<Eigen::Index>(m_weight.size()); }
    Eigen::Index cols() const { return rows(); }
    template <typename Right>
    Eigen::Product<AlphaSystem, Right, Eigen::AliasFreeProduct> operator*(
        const Eigen::MatrixBase<Right>& right) const {
        return {*this, right.derived()};
    }

    void multiply(const float* values, float* result) const {
        m_checkpoint();
        m_laplacian.multiply(values, m_weight.data(), result);
    }
    float diagonal(int pixel) const {
        return m_laplacian.diagonal(pixel) + m_weight[static_cast<size_t>(pixel)];
    }

  private:
    const MattingLaplacian& m_laplacian;
    const std::vector<float>& m_weight;
    const std::function<void()>& m_checkpoint;
};

namespace Eigen::internal {
template <typename Right>
struct generic_product_impl<AlphaSystem, Right, SparseShape, DenseShape, GemvProduct>
    : generic_product_impl_base<AlphaSystem, Right, generic_product_impl<AlphaSystem, Right>> {
    using Scalar = float;

    template <typename Result>
    static void evalTo(Result& result, const AlphaSystem& system, const Right& right) {
        result.setZero();
        system.multiply(right.data(), result.data());
    }
};
}  // namespace Eigen::internal

namespace {

// Jacobi's preconditioner; the library's own wants a stored matrix.
class Diagonal {
  public:
    Diagonal& analyzePattern(const AlphaSystem&) { return *this; }
    Diagonal& factorize(const AlphaSystem& system) {
        m_inverse.resize(system.rows());
        for (Eigen::Index pixel = 0; pixel < system.rows(); ++pixel) {
            const float diagonal = system.diagonal(static_cast<int>(pixel));
            m_inverse[pixel] = diagonal > 0.0F ? 1.0F / diagonal : 1.0F;
        }
        return *this;
    }
    Diagonal& compute(const AlphaSystem& system) { return factorize(system); }
    template <typename Right>
    auto solve(const Eigen::MatrixBase<Right>& right) const {
        return m_inverse.cwiseProduct(right.derived());
    }
    Eigen::ComputationInfo info() { return Eigen::Success; }

  private:
    Eigen::VectorXf m_inverse;
};

constexpr int kMostRounds = 300;
// Root mean square of what is left of the equations.
constexpr float kTolerance = 1e-4F;

}  // namespace

int solveAlpha(const PixelRuns& inner, const MattingLaplacian& laplacian, const AlphaPrior& prior,
               std::vector<float>& alpha, const std::function<void()>& checkpoint) {
    const size_t size = alpha.size();
    std::vector<float> weight(size, 0.0F);
    Eigen::VectorXf left = Eigen::VectorXf::Zero(static_cast<Eigen::Index>(size));
    size_t pixel = 0;
    for (const MattingLaplacian::Stretch& stretch : laplacian.stretches()) {
        for (int i = 0; i < stretch.length; ++i, ++pixel) {
            weight[static_cast<size_t>(stretch.first + i)] = prior.weight[pixel];
        }
    }
    laplacian.multiply(alpha.data(), weight.data(), left.data());
    pixel = 0;
    float squares = 0.0F;
    for (const MattingLaplacian::Stretch& stretch : laplacian.stretches()) {
        for (int i = 0; i < stretch.length; ++i, ++pixel) {
            float& value = left[stretch.first + i];
            value = prior.weight[pixel] * prior.target[pixel] - value;
            squares += value * value;
        }
    }
    const float wanted = kTolerance * std::sqrt(static_cast<float>(inner.size()));
    if (squares <= wanted * wanted) {
        return 0;
    }
    const AlphaSystem system(laplacian, weight, checkpoint);
    Eigen::ConjugateGradient<AlphaSystem, Eigen::Lower | Eigen::Upper, Diagonal> solver;
    solver.setMaxIterations(kMostRounds);
    solver.setTolerance(wanted / std::sqrt(squares));
    solver.compute(system);
    const Eigen::VectorXf change = solver.solve(left);
    for (size_t i = 0; i < size; ++i) {
        alpha[i] += change[static_cast<Eigen::Index>(i)];
    }
    return static_cast<int>(solver.iterations());
}
