// How paths and stroking parameters look in the log: one dumper for each record, named after it.
//
// Each writes its element at the present depth and leaves the depth as it found it. A null record writes nothing.
// Values are printed as stored; start points and edges of a path stand in two lists, joined by their index.

#pragma once

#include "orvlog/interface/gpa-path.h"
#include "orvlog/log/orvlog-writer.h"

void dump_GPA_BezierSegment(ORVLOG_Writer* writer, const GPA_BezierSegment* segment);
void dump_GPA_QuadBezierSegment(ORVLOG_Writer* writer, const GPA_QuadBezierSegment* segment);
void dump_GPA_StaircaseSegment(ORVLOG_Writer* writer, const GPA_StaircaseSegment* segment);
void dump_GPA_EllipticalSegment(ORVLOG_Writer* writer, const GPA_EllipticalSegment* segment);

// The head that opens every edge.
void dump_GPA_Edge(ORVLOG_Writer* writer, const GPA_Edge* edge);

void dump_GPA_StraightEdge(ORVLOG_Writer* writer, const GPA_StraightEdge* edge);
void dump_GPA_BezierEdge(ORVLOG_Writer* writer, const GPA_BezierEdge* edge);
void dump_GPA_QuadBezierEdge(ORVLOG_Writer* writer, const GPA_QuadBezierEdge* edge);
void dump_GPA_StaircaseEdge(ORVLOG_Writer* writer, const GPA_StaircaseEdge* edge);
void dump_GPA_EllipticalEdge(ORVLOG_Writer* writer, const GPA_EllipticalEdge* edge);

// The edge by its type; a null edge or one of an unknown type leaves its member empty.
void dump_GPA_EdgePointer(ORVLOG_Writer* writer, const GPA_EdgePointer* pointer);

void dump_GPA_Path(ORVLOG_Writer* writer, const GPA_Path* path);

// The edges are as many as the path says. Without a path there are none, and a warning is queued.
void dump_GPA_PathPointer(ORVLOG_Writer* writer, const GPA_PathPointer* pointer);

void dump_GPA_PathStrokingParams(ORVLOG_Writer* writer, const GPA_PathStrokingParams* params);

// The frame "GSH_ShapePointer.member" around a path; nothing for null.
void dump_shape_path_member(ORVLOG_Writer* writer, const char* member, const GPA_PathPointer* pointer);
