#pragma once

#include <vector>

namespace tool {

/// The distances between all points of a list: at [i][j] that of the points i and j.
using DistanceMatrix = std::vector<std::vector<double>>;

/// How much nearer each point lies to its own class than to the next one: the silhouettes of
/// Rousseeuw ("Silhouettes: a graphical aid to the interpretation and validation of cluster
/// analysis", 1987), from -1 to 1, exactly, over all pairs. A point that is alone in its class
/// counts 0, as there, and so does one in no class; of several classes the first counts. 0 where
/// there are fewer than two classes. Time: the square of the number of points.
std::vector<double> silhouettes(DistanceMatrix const& distances,
                                std::vector<std::vector<int>> const& classes);

/// The mean of the silhouettes of all points; 0 of none.
double mean_silhouette(std::vector<double> const& silhouettes);

/// What a silhouette says in a word, by Kaufman and Rousseeuw ("Finding Groups in Data", 1990):
/// "strong" above 0.70, "reasonable" above 0.50, "weak" above 0.25, else "none".
char const* structure_of(double silhouette);

}  // namespace tool
