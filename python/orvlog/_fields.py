"""Which attributes of a log hold whole numbers, and which texts; all other numbers are floats. The tables of
docs/log-format.md tell them."""

WHOLE = frozenset("""
    GAM_VERSION GBT_VERSION GCA_VERSION GCD_VERSION GCM_VERSION GER_VERSION GFI_VERSION GFX_VERSION GGO_VERSION
    GHT_VERSION GIO_VERSION GME_VERSION GMM_VERSION GNC_VERSION GOP_VERSION GOS_VERSION GPA_VERSION GSH_VERSION
    GUT_VERSION GfpId HOLV_VERSION Id MIRDA_TOLMA_VERSION ORVLOG_CONTENT_VERSION ORV_VERSION TPN_VERSION TRN_VERSION
    attr_returned attr_row_step bit_depth cl_DecodeBitDepth csd_Defn.ProfileBufferSize csd_NumBaseChans
    csd_NumNamedChans document_context document_id drawing_context ed_SegmentCount empty_chans face_seq_number
    fill_object_type fp_HeightInPixels fp_WidthInPixels fsi_FontAllCaps fsi_FontFamily fsi_FontSmallCaps
    fsi_FontStretch fsi_FontStyle fsi_FontWeight fsi_OsFamilyClass fsi_Panose g2_GradientExtendMode
    g2_GradientRoundingMode g2_UseInterpColorSpace gbi_MaxX gbi_MaxY gbi_MinX gbi_MinY gcs_nCharacters
    gcs_nGlyphIndices gdb_BlackIsOne gdb_Height gdb_Rowstep gdb_Width gdf_FbeSize gdf_Height gdf_Width gdr_Height
    gdr_RleSize gdr_Width gdt_TrueTypeSize ggs_Flags ggs_GlyphIndex glyph_index_out glyph_sub_pixel_variant
    gm_GradientExtendMode gm_GradientRoundingMode gm_UseInterpColorSpace go_ColorInfo go_Count gr_GradientExtendMode
    gr_GradientRoundingMode gr_UseInterpColorSpace group_unique_id gsp_StringDesc.gsd_GlyphMappingLen
    gsp_StringDesc.gsd_StyleSimulation gsp_StringDesc.gsd_TextLen gsp_TextPtr id im_ImageEncoding
    im_ImageHeightPixels im_ImageWidthPixels im_IndexColorDepth im_NumNonalphaChans img_returned img_row_step
    imp_CompressedStreamLength imp_IndexColorTable imp_RowStep irs_ImageHeight irs_ImageWidth it_XFlip it_YFlip len
    mrs_RectCount num_chans object_type_and_flag op_Operator op_UniqueId orvlog_font_spec_id orvlog_string_desc_id
    pa_NumEdges parent_drawing prl_LutDimensions prl_LutSize prl_OutputBitDepth psp_DashCount resource_id
    skip_pixels sl_UniqueId ss_BoundingBox ss_Height ss_StartY ss_XOffset ss_YOffset stroke_object_type tiling_flags unique_font_id
    xl_StartX xl_StopX
""".split())

TEXTS = frozenset("""
    AttrFileName Endian GlyphLoggingMode ImageFileName LoggingMode async_img_log_file_name compression cp_Filename
    fp_EngineIdGet imp_DirectImageFileName name val
""".split())
