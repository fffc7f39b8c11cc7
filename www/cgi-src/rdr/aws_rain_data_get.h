// Station rain values from the hourly minute files, into the loaded stations of stn_data.
#ifndef AWS_RAIN_DATA_GET_H
#define AWS_RAIN_DATA_GET_H

// For each of the first num_stn stations: the rain state from the rain indicators of the 15
// minutes seq - 9 .. seq + 5, the latest 15-minute amount of seq - 4 .. seq + 5, the value that
// overlay mode `aws_mode` prints, and the wind at seq. Returns 0.
int aws_rain_data_get(int seq, int aws_mode, int num_stn);

#endif
