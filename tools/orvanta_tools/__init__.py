"""What orvanta-points, orvanta-view and orvanta-plot share.

Arrays of coordinates have the shape (n, 3) and the unit of the solution.
"""
