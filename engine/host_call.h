// Calls of the host's routines.
#ifndef ORLI11_ENGINE_HOST_CALL_H
#define ORLI11_ENGINE_HOST_CALL_H

// The result of the routine; 0 or null when it throws. An exception of the host is caught here:
// neither the engine's own frames nor those of C callers are written to be unwound.
template <class Routine>
auto CallHost(Routine routine) noexcept -> decltype(routine()) {
  try {
    return routine();
  } catch (...) {
    return decltype(routine())();
  }
}

#endif
