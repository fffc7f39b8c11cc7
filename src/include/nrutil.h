// Index-range arrays: pointers indexed from the caller's low bound to its high bound (inclusive).
// Allocation failure is fatal: three lines on standard error and exit status 1.
#ifndef NRUTIL_H
#define NRUTIL_H

[[noreturn]] void nrerror(const char *error_text);

char *cvector(int nl, int nh);
short *svector(int nl, int nh);
float **matrix(int nrl, int nrh, int ncl, int nch);
unsigned char **cmatrix(int nrl, int nrh, int ncl, int nch);
short **smatrix(int nrl, int nrh, int ncl, int nch);

void free_cvector(char *v, int nl, int nh);
void free_svector(short *v, int nl, int nh);
void free_matrix(float **m, int nrl, int nrh, int ncl, int nch);
void free_cmatrix(unsigned char **m, int nrl, int nrh, int ncl, int nch);
void free_smatrix(short **m, int nrl, int nrh, int ncl, int nch);

#endif
