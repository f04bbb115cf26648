#include "report/corpus_map.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>
#include <utility>

namespace tool {

namespace {

using Vector = std::vector<double>;

// More than the two that are wanted: what lies behind them then hardly delays them.
constexpr std::size_t block = 6;
constexpr int rounds = 40;
constexpr int sweeps = 12;
// What is a smaller part than this is rounding.
constexpr double nothing = 1e-12;

double dot(Vector const& a, Vector const& b) {
  return std::inner_product(a.begin(), a.end(), b.begin(), 0.0);
}

double dot(ReportRow const& row, Vector const& vector) {
  double sum = 0.0;
  for (std::size_t k = 0; k < row.indices.size(); ++k) {
    sum += row.values[k] * vector[row.indices[k]];
  }
  return sum;
}

void scale(Vector& vector, double factor) {
  for (double& x : vector) {
    x *= factor;
  }
}

void subtract(Vector& from, double factor, Vector const& vector) {
  for (std::size_t i = 0; i < from.size(); ++i) {
    from[i] -= factor * vector[i];
  }
}

// The rows less their mean, as a matrix that is only multiplied with.
class Centered {
 public:
  Centered(std::vector<ReportRow> const& rows, std::size_t dimensions)
      : rows_(rows), mean_(dimensions) {
    for (ReportRow const& row : rows) {
      add(row, 1.0 / static_cast<double>(rows.size()), mean_);
    }
  }

  Vector const& mean() const { return mean_; }

  // One value for each dimension.
  Vector transposed_times(Vector const& of_rows) const {
    Vector result(mean_.size());
    double sum = 0.0;
    for (std::size_t i = 0; i < rows_.size(); ++i) {
      add(rows_[i], of_rows[i], result);
      sum += of_rows[i];
    }
    subtract(result, sum, mean_);
    return result;
  }
  // One value for each row.
  Vector times(Vector const& of_dimensions) const {
    double const shift = dot(mean_, of_dimensions);
    Vector result(rows_.size());
    for (std::size_t i = 0; i < rows_.size(); ++i) {
      result[i] = dot(rows_[i], of_dimensions) - shift;
    }
    return result;
  }
  // Zero where the rows are equal but for rounding.
  double squares() const {
    double sum = 0.0;
    for (ReportRow const& row : rows_) {
      sum += square_of(row);
    }
    double const around_mean = sum - static_cast<double>(rows_.size()) * dot(mean_, mean_);
    return around_mean > nothing * sum ? around_mean : 0.0;
  }

 private:
  static void add(ReportRow const& row, double factor, Vector& to) {
    for (std::size_t k = 0; k < row.indices.size(); ++k) {
      to[row.indices[k]] += factor * row.values[k];
    }
  }

  std::vector<ReportRow> const& rows_;
  Vector mean_;
};

// Fixed vectors in which nothing repeats, from -0.5 to 0.5: a linear congruential sequence with the
// multiplier of D. Knuth's MMIX.
std::vector<Vector> first_vectors(std::size_t size) {
  std::uint64_t state = 1;
  std::vector<Vector> vectors(std::min(block, size), Vector(size));
  for (Vector& vector : vectors) {
    for (double& x : vector) {
      state = state * 6364136223846793005U + 1442695040888963407U;
      x = static_cast<double>(state >> 40U) / static_cast<double>(1U << 24U) - 0.5;
    }
  }
  return vectors;
}

// Makes the vectors orthonormal; one that depends on those before it becomes zero.
void orthonormalize(std::vector<Vector>& vectors) {
  constexpr double lost = 1e-10;
  for (std::size_t i = 0; i < vectors.size(); ++i) {
    double const before = std::sqrt(dot(vectors[i], vectors[i]));
    // Once more, for what rounding left of the others.
    for (int time = 0; time < 2; ++time) {
      for (std::size_t j = 0; j < i; ++j) {
        subtract(vectors[i], dot(vectors[i], vectors[j]), vectors[j]);
      }
    }
    double const length = std::sqrt(dot(vectors[i], vectors[i]));
    scale(vectors[i], length > lost * before ? 1.0 / length : 0.0);
  }
}

// Rotates the vectors, and the symmetric matrix of their products with it, until that is diagonal.
void diagonalize(std::vector<Vector>& matrix, std::vector<Vector>& vectors) {
  std::size_t const size = vectors.size();
  auto const rotate = [](double cosine, double sine, double& x, double& y) {
    double const turned = cosine * x - sine * y;
    y = sine * x + cosine * y;
    x = turned;
  };
  for (int sweep = 0; sweep < sweeps; ++sweep) {
    for (std::size_t p = 0; p < size; ++p) {
      for (std::size_t q = p + 1; q < size; ++q) {
        if (matrix[p][q] == 0.0) {
          continue;
        }
        double const theta = (matrix[q][q] - matrix[p][p]) / (2.0 * matrix[p][q]);
        double const tangent =
            (theta < 0.0 ? -1.0 : 1.0) / (std::abs(theta) + std::sqrt(theta * theta + 1.0));
        double const cosine = 1.0 / std::sqrt(tangent * tangent + 1.0);
        double const sine = tangent * cosine;
        for (std::size_t k = 0; k < size; ++k) {
          rotate(cosine, sine, matrix[k][p], matrix[k][q]);
        }
        for (std::size_t k = 0; k < size; ++k) {
          rotate(cosine, sine, matrix[p][k], matrix[q][k]);
        }
        for (std::size_t k = 0; k < vectors[p].size(); ++k) {
          rotate(cosine, sine, vectors[p][k], vectors[q][k]);
        }
      }
    }
  }
}

struct Component {
  double square = 0.0;
  Vector of_rows;
};

// In order, the greatest first.
std::vector<Component> components_of(Centered const& matrix, std::size_t row_count) {
  std::vector<Vector> vectors = first_vectors(row_count);
  for (int round = 0; round < rounds; ++round) {
    orthonormalize(vectors);
    for (Vector& vector : vectors) {
      vector = matrix.times(matrix.transposed_times(vector));
    }
  }
  orthonormalize(vectors);
  std::vector<Vector> products(vectors.size(), Vector(vectors.size()));
  for (std::size_t i = 0; i < vectors.size(); ++i) {
    Vector const image = matrix.times(matrix.transposed_times(vectors[i]));
    for (std::size_t j = i; j < vectors.size(); ++j) {
      products[i][j] = products[j][i] = dot(image, vectors[j]);
    }
  }
  diagonalize(products, vectors);
  std::vector<Component> components;
  for (std::size_t i = 0; i < vectors.size(); ++i) {
    components.push_back({products[i][i], std::move(vectors[i])});
  }
  std::stable_sort(components.begin(), components.end(),
                   [](auto const& a, auto const& b) { return a.square > b.square; });
  return components;
}

// Whether the row that lies farthest along the component lies on its negative side.
bool is_turned(Vector const& of_rows) {
  double farthest = 0.0;
  for (double const x : of_rows) {
    farthest = std::abs(x) > std::abs(farthest) ? x : farthest;
  }
  return farthest < 0.0;
}

}  // namespace

CorpusMap::CorpusMap(std::vector<ReportRow> const& rows, std::size_t dimensions) {
  Centered const matrix(rows, dimensions);
  double const squares = matrix.squares();
  std::vector<Component> const components = components_of(matrix, rows.size());
  for (std::size_t i = 0; i < axes_.size(); ++i) {
    axes_[i].assign(dimensions, 0.0);
    if (squares == 0.0 || i >= components.size() || components[i].square <= nothing * squares) {
      continue;
    }
    axes_[i] = matrix.transposed_times(components[i].of_rows);
    double const length = std::sqrt(dot(axes_[i], axes_[i]));
    scale(axes_[i], (is_turned(components[i].of_rows) ? -1.0 : 1.0) / length);
    middle_[i] = dot(matrix.mean(), axes_[i]);
    shares_[i] = components[i].square / squares;
  }
}

CorpusMap::Place CorpusMap::place_of(ReportRow const& row) const {
  return {dot(row, axes_[0]) - middle_[0], dot(row, axes_[1]) - middle_[1]};
}

}  // namespace tool
