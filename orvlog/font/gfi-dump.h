// How font and glyph records look in the log: one dumper for each record, named after it.
//
// Each writes its element at the present depth and leaves the depth as it found it. A null record writes nothing.

#pragma once

#include "orvlog/interface/gfi-font.h"
#include "orvlog/log/orvlog-writer.h"

#include <cstdint>

// GFI_GDT_* under the name of an argument.
void gfi_attr_glyph_desc_type(ORVLOG_Writer* writer, const char* name, uint32_t type);
// GFI_CE_*.
void gfi_attr_character_encoding(ORVLOG_Writer* writer, const char* name, uint32_t encoding);

// The head of a glyph description.
void dump_GFI_GlyphDesc(ORVLOG_Writer* writer, const GFI_GlyphDesc* desc);
// The description by its type, with its payload; an unknown type writes nothing.
void dump_glyph_desc(ORVLOG_Writer* writer, const GFI_GlyphDesc* desc);
// Without a description the member stays empty, and a warning is queued.
void dump_GFI_GlyphDescPointer(ORVLOG_Writer* writer, const GFI_GlyphDescPointer* pointer);

void dump_GFI_FontSpecPointer(ORVLOG_Writer* writer, const GFI_FontSpecPointer* pointer);

// Clusters, their glyphs and the closing tags of both stand at the indent of the string itself; readers of the log
// rely on it. Arrays that are missing, and clusters beyond 65535, are warned of and left out.
void dump_GFI_StringDescPointer(ORVLOG_Writer* writer, const GFI_StringDescPointer* pointer);
void dump_GFI_GlyphClusterSpec(ORVLOG_Writer* writer, const GFI_GlyphClusterSpec* cluster);
void dump_GFI_GlyphSpec(ORVLOG_Writer* writer, const GFI_GlyphSpec* glyph);

void dump_GFI_FontSubstInfo(ORVLOG_Writer* writer, const GFI_FontSubstInfo* info);
