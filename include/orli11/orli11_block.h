/* orli11_block.h - the layout of a stored context, for hosts that read blocks themselves.
 *
 *   block    version:u8 operators:text[20] inputs? formulas?          little-endian, without gaps
 *   section  tag:u16 count:u16 rows                                   omitted when it has no rows
 *   inputs   tag 250, each row an OrlStoredInput and the routine's name:text
 *   formulas tag 252, each row text:text name:text
 *   text     its bytes and one zero byte
 *
 * docs/block-format.md describes the whole format and that of older versions. */
#ifndef ORLI11_BLOCK_H
#define ORLI11_BLOCK_H

#include <stdint.h>

enum {
  ORL_BLOCK_VERSION = 3,    /* the one that is written */
  ORL_BLOCK_OPERATORS = 20, /* names of operator routines: + - * / ||, four types of each */
  ORL_BLOCK_TAG_INPUTS = 250,
  ORL_BLOCK_TAG_FORMULAS = 252,
  ORL_BLOCK_HEADER_SIZE = 4,  /* tag and count of a section */
  ORL_BLOCK_MOST_ROWS = 32767 /* that readers take of a section */
};

#pragma pack(push, 1)
/* The fixed part of an input row. Its fields are those of ExprItem, with zeros in place of
 * addresses. */
typedef struct {
  int16_t kind;
  int16_t dataType;
  uint32_t zero[2];
  char name[65];
  int16_t paramCount;
  uint16_t subClass;
  uint16_t optionalCount;
  uint16_t itemFlags;
} OrlStoredInput; /* 85 bytes */
#pragma pack(pop)

#endif
