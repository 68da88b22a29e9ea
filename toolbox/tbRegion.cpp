#include "toolbox/tbRegion.h"

tbRegion::~tbRegion() = default;
