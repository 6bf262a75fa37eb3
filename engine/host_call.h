// Calls of the host's routines.
#ifndef ORLI11_ENGINE_HOST_CALL_H
#define ORLI11_ENGINE_HOST_CALL_H

// What the routine returns; nothing (0 or null) when it throws. An exception of the host ends
// here: the engine's own frames are not made to be unwound, nor are those of C
// callers.
template <class Routine>
auto CallHost(Routine routine) noexcept -> decltype(routine()) {
  try {
    return routine();
  } catch (...) {
    return decltype(routine())();
  }
}

#endif
