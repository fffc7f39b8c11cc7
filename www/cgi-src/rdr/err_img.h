// The error picture: a light grey canvas of the requested size that names the time, the request,
// the size and the file, and the error that ended the request.
#ifndef ERR_IMG_H
#define ERR_IMG_H

// Error codes of a request, as the picture shows them.
constexpr int ERR_QUERY = 1;      // no query string, no grid file within the candidate times,
                                  // or no canvas for the map and size asked for
constexpr int ERR_GRID_FILE = 2;  // the grid file could not be read

// A picture could not be made at all: the graphics library refused the image.
constexpr int PICTURE_NO_IMAGE = -1;

// Writes the response body of error `err` after the status line: 0, or PICTURE_NO_IMAGE
// (nothing written).
int err_img(int err);

#endif
