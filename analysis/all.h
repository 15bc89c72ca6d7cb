// The analyses: each is declared in the file of its name.
#ifndef ANALYSIS_ALL_H_
#define ANALYSIS_ALL_H_

#include "analysis/declare.h"

namespace survmeth::analysis {

Declaration lifeDeclaration();       // survival curves by group, medians, tests that compare them
Declaration coxDeclaration();        // proportional-hazards regression
Declaration clogitDeclaration();     // conditional logistic regression of matched sets
Declaration incidenceDeclaration();  // competing events: incidence curves and their comparison
Declaration grayDeclaration();       // Gray's test alone
Declaration finegrayDeclaration();   // regression of subdistribution hazards
Declaration statesDeclaration();     // several states
Declaration rocDeclaration();        // ROC curves of markers and their comparison
Declaration agreeDeclaration();      // agreement of two methods, repeatability of one
Declaration demingDeclaration();     // Deming regression of one method on another

}  // namespace survmeth::analysis

#endif  // ANALYSIS_ALL_H_
