#include "ReadProblems.h"

#include <iostream>

namespace QorBgpTools {

bool reportReadProblems(char const* command, std::string const& file, mrt::Report const& report) {
   for (mrt::Problem const& problem : report.problems) {
      std::cerr << "qorbgp-comm " << command << ": " << file << " offset " << problem.offset << ": "
                << problem.text << '\n';
   }
   if (report.skippedRecords > report.problems.size()) {
      std::cerr << "qorbgp-comm " << command << ": " << file << ": "
                << report.skippedRecords - report.problems.size()
                << " more damaged records skipped\n";
   }
   return report.problems.empty() && report.skippedRecords == 0;
}

} // namespace QorBgpTools
