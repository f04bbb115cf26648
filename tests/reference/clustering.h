#pragma once

#include "reference/canopy.h"
#include "reference/dbscan.h"
#include "reference/eps.h"
#include "reference/kmeans.h"
#include "reference/measures.h"
