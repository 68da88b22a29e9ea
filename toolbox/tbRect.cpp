#include "toolbox/tbRect.h"

tbRect::~tbRect() = default;
