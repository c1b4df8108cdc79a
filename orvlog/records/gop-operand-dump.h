// How operand records look in the log: the common head, flat colours, gradients and their stops, and tiling
// parameters. The pointer records around them, and images, stand elsewhere.
//
// Each writes its element at the present depth and leaves the depth as it found it. A null record writes nothing.

#pragma once

#include "orvlog/interface/gop-operand.h"
#include "orvlog/log/orvlog-writer.h"

// The GOP_Operand element.
void ORVLOG_DumpOperand(ORVLOG_Writer* writer, const GOP_Operand* operand);

void dump_GOP_OperandFlat(ORVLOG_Writer* writer, const GOP_OperandFlat* operand);
void dump_GOP_OperandGrad2Pt(ORVLOG_Writer* writer, const GOP_OperandGrad2Pt* operand);
void dump_GOP_OperandGrad3Pt(ORVLOG_Writer* writer, const GOP_OperandGrad3Pt* operand);
void dump_GOP_OperandGradMultistop(ORVLOG_Writer* writer, const GOP_OperandGradMultistop* operand);
void dump_GOP_OperandGradRadial(ORVLOG_Writer* writer, const GOP_OperandGradRadial* operand);
void dump_GOP_GradStop(ORVLOG_Writer* writer, const GOP_GradStop* stop);
void dump_GOP_TilingParameters(ORVLOG_Writer* writer, const GOP_TilingParameters* parameters);
