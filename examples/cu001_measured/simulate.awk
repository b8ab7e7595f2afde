# Counts of an imagined instrument from the exported pattern (theta,phi,I in steps of half a degree): every 5 degrees
# from 10 to 75 on a scale of the polar angle that reads 1.5 degrees too little, its transmission, and counting noise
# from a generator of its own, so that every awk gives the same file.
BEGIN { FS = ","; OFS = ","; seed = 2026; print "# simulated, see README.md"; print "theta,phi,counts" }
function uniform() { seed = (seed * 16807) % 2147483647; return seed / 2147483647 }
function normal(    i, sum) { sum = -6; for (i = 0; i < 12; i++) sum += uniform(); return sum }
/^[0-9]/ && ($1 - 1.5) % 5 == 0 && $1 >= 11.5 && $1 <= 76.5 && $2 % 5 == 0 {
  angle = $1 * 3.14159265358979 / 180
  mean = 200 * $3 * (0.3 + 0.7 * cos(angle))
  printf "%d,%d,%d\n", $1 - 1.5, $2, mean + sqrt(mean) * normal()
}
