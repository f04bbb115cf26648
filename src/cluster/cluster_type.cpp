#include "cluster/cluster_type.h"

int gi_K_ClusterType = 1;
