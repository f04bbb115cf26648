#include "report/report_classes.h"

#include <utility>

#include "boxes/box_classes.h"

#include "classes/neighbour_distances.h"

namespace tool {

namespace {

ReportRow center_of(HSparsePoints const& points, std::vector<int> const& members) {
  return row_of(points.get_center_point(members).vt_data);
}

ClassesReport::Curve curve_of(HSparsePoints const& points, double eps, int minpts) {
  return {eps, minpts, neighbour_distances(points, minpts)};
}

void add_center(QXPKMeansNode const& node, ClassesReport& report) {
  ClassesReport::Class& one = report.classes.emplace_back();
  one.id = node.str_class_id;
  one.name = node.str_class_name;
  one.radius = node.d_radius;
  if (node.vt_weight.size() == report.words.size()) {
    one.center = row_of(node.vt_weight);
  }
}

void add_members(QXPDBScanNode const& node, ClassesReport& report) {
  ClassesReport::Class& one = report.classes.emplace_back();
  one.id = node.str_class_id;
  one.name = node.str_class_name;
  one.eps = node.d_eps;
  one.minpts = node.i_minpts;
  for (QXPFeatureNode const& member : node.vt_file_node) {
    if (member.vt_weight.size() == report.words.size()) {
      one.members.push_back(static_cast<int>(report.files.size()));
      report.files.push_back({member.str_file_id, row_of(member.vt_weight)});
    }
  }
  one.size = one.members.size();
}

HSparsePoints points_of(std::vector<ClassesReport::File> const& files) {
  std::vector<ReportRow> rows;
  rows.reserve(files.size());
  for (ClassesReport::File const& file : files) {
    rows.push_back(file.row);
  }
  return HSparsePoints(std::move(rows));
}

}  // namespace

ClassesReport report_of_learning(ClassReport const& shown, Corpus const& corpus,
                                 Clustering const& run) {
  ClassesReport report;
  report.kind = "learn";
  report.box = shown.box.value_or(ClassReport::Box());
  report.method = shown.method;
  report.parameters = shown.parameters;
  report.words = run.words;
  report.failed = shown.failed;
  std::vector<ReportRow> rows = rows_of(run.points);
  for (std::size_t i = 0; i < rows.size(); ++i) {
    report.files.push_back({corpus.files[i], std::move(rows[i])});
  }
  bool const is_by_files = run.neighbourhood.minpts > 0;
  for (std::size_t i = 0; i < run.clusters.size(); ++i) {
    ClassesReport::Class& one = report.classes.emplace_back();
    one.id = shown.classes[i].id;
    one.name = shown.classes[i].label;
    one.size = run.clusters[i].size();
    one.radius = shown.classes[i].radius;
    if (is_by_files) {
      one.eps = run.neighbourhood.eps;
      one.minpts = run.neighbourhood.minpts;
    }
    one.members = run.clusters[i];
    one.center = center_of(run.points, one.members);
  }
  if (is_by_files) {
    report.curve = curve_of(run.points, run.neighbourhood.eps, run.neighbourhood.minpts);
  }
  return report;
}

ClassesReport report_of_box(ClassReport::Box const& where, QXPPolicyMorvaClustBox const& box) {
  ClassesReport report;
  report.kind = "box";
  report.box = where;
  report.words = box.vt_words;
  if (box.i_cluster_type == kmeans_box) {
    report.method = "kmeans";
    for (QXPKMeansNode const& node : box.vt_kmeans_node) {
      add_center(node, report);
    }
    return report;
  }
  report.method = "dbscan";
  for (QXPDBScanNode const& node : box.vt_dbscan_node) {
    add_members(node, report);
  }
  HSparsePoints const points = points_of(report.files);
  for (ClassesReport::Class& one : report.classes) {
    one.center = center_of(points, one.members);
    one.radius = points.get_max_radius(one.members);
  }
  if (!report.classes.empty()) {
    QXPDBScanNode const& first = box.vt_dbscan_node.front();
    report.parameters = {{"eps", first.d_eps}, {"minpts", first.i_minpts}};
    report.curve = curve_of(points, first.d_eps, first.i_minpts);
  }
  return report;
}

}  // namespace tool
