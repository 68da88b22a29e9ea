#include "toolbox/tbPoint.h"

tbPoint::~tbPoint() = default;
