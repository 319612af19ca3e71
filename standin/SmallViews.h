#pragma once

#include <vector>

#include "standin/Database.h"
#include "standin/Package.h"

namespace standin {

// Writes every view but connectivity and full geometry: those whose size does not depend on the
// count of records.
void writeSmallViews(Database& database, std::vector<Net>& nets,
                     const std::vector<Component>& components, Random& random);

}  // namespace standin
