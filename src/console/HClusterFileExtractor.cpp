#include "console/HClusterFileExtractor.h"

#include "host/HJieba.h"

HClusterFileExtractor* HClusterFileExtractor::pext = nullptr;

HClusterFileExtractor::HClusterFileExtractor() = default;
HClusterFileExtractor::~HClusterFileExtractor() = default;

HClusterFileExtractor* HClusterFileExtractor::pins() {
  if (pext == nullptr) {
    pext = new HClusterFileExtractor;
  }
  return pext;
}

bool HClusterFileExtractor::init_jieba() {
  return HJieba::pins()->Init() == 0;
}
