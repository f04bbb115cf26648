#pragma once

#include "host/utf8.h"
