#include "host/Orlec/Global.h"

namespace Orlec {

Global* Global::ins() {
  static Global* const global = new Global;  // outlives every caller, static objects included
  return global;
}

Global* Global::pins() {
  return ins();
}

}  // namespace Orlec
