#pragma once

#include "host/native_path.h"
