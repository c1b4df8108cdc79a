// How shapes and shape lists look in the log. They take the session, since text shapes are numbered in it.
//
// Each writes its element at the present depth and leaves the depth as it found it. A null record writes nothing.

#pragma once

#include "orvlog/interface/gsh-shape.h"
#include "orvlog/session/orvlog-session.h"

#include <cstdint>

// Collections nested deeper than this are warned of and left out.
constexpr uint32_t ORVLOG_MAX_COLLECTION_DEPTH = 1000;

// The head of every shape.
void dump_GSH_Shape(ORVLOG_Writer* writer, const GSH_Shape* shape);

// The element of the shape's kind; an unknown kind writes nothing.
void dump_shape_header(ORVLOG_Writer* writer, const GSH_Shape* shape);

// In base mode the glyphs of a text shape follow behind its closing tag. Without a header the member stays empty,
// and a warning is queued.
void dump_GSH_ShapePointer(ORVLOG_Session* session, const GSH_ShapePointer* pointer);

// One list with the head of its collection; sl_Next is not followed. A collection that comes back to a list that
// it has passed ends there, with a warning.
void dump_GSH_ShapeList(ORVLOG_Session* session, const GSH_ShapeList* list);

// The frame "owner.member" around a shape; nothing for null.
void dump_shape_member(ORVLOG_Session* session, const char* owner, const char* member, const GSH_ShapePointer* shape);

// The frame "owner.member" around each list along sl_Next; nothing for null. A chain that comes back to a list that
// it has passed ends there, with a warning.
void dump_shape_list_member(ORVLOG_Session* session, const char* owner, const char* member, const GSH_ShapeList* list);
