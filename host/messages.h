// Texts for the message ids of the engine.
#ifndef ORLI11_HOST_MESSAGES_H
#define ORLI11_HOST_MESSAGES_H

#include <cstdint>
#include <string>

// The text for an id of FormulaError, or a general one for an id that has none.
std::string MessageText(int32_t id);

#endif
