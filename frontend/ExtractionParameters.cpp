#include "frontend/ExtractionParameters.h"

CExtractionParameters ExtractionParameters;
