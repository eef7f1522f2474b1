#include "ToolRunner.h"
