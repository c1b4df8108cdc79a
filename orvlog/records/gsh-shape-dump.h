// How shapes and shape lists look in the log. They take the session, since text shapes are numbered in it.

#pragma once

#include "orvlog/interface/gsh-shape.h"
#include "orvlog/session/orvlog-session.h"

// The frame "owner.member" around a shape; nothing for null.
void dump_shape_member(ORVLOG_Session* session, const char* owner, const char* member, const GSH_ShapePointer* shape);

// The frame "owner.member" around each list along sl_Next; nothing for null.
void dump_shape_list_member(ORVLOG_Session* session, const char* owner, const char* member, const GSH_ShapeList* list);
