#pragma once

#include <vector>

#include "standin/Database.h"
#include "standin/Package.h"

namespace standin {

// Writes all views but connectivity and full geometry. The size of these views does not depend on
// the number of records.
void writeSmallViews(Database& database, std::vector<Net>& nets,
                     const std::vector<Component>& components, Random& random);

}  // namespace standin
