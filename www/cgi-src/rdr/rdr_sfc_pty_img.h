// The composition of a request's picture.
#ifndef RDR_SFC_PTY_IMG_H
#define RDR_SFC_PTY_IMG_H

// Draws the picture of the request with its layers in their stacking order and writes the
// response body: 0, or PICTURE_NO_IMAGE when the graphics library refused the image.
int rdr_sfc_pty_img();

#endif
