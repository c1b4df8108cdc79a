#include "orvlog/image/orvlog-image-wrapper.h"

void ORVLOG_ReplaceImageOperand(ORVLOG_Session*, GOP_OperandPointer**, uint32_t* kept_flag)
{
    *kept_flag = 0;
}

void ORVLOG_DeleteImagePool(GOP_OperandImagePointer*) {}
