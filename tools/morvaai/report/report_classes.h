#pragma once

#include "morvaai.h"

#include "classes/class_report.h"
#include "classes/corpus.h"
#include "classes/method.h"
#include "report/report_data.h"

namespace tool {

/// What a report shows of classes that were just learnt: every file of the corpus, in its class or
/// in none. `shown` describes the classes of the run in their order.
ClassesReport report_of_learning(ClassReport const& shown, Corpus const& corpus,
                                 Clustering const& run);

/// What a report can show of a box alone: the centers of its classes, or the files that it keeps.
/// A file whose weights do not go with the words of the box is left out, as it is in a decision.
ClassesReport report_of_box(ClassReport::Box const& where, QXPPolicyMorvaClustBox const& box);

}  // namespace tool
