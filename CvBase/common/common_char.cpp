#include "CvBase/common/common_char.h"
