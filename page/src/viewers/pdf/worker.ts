import './streamiteration';
import 'pdfjs-dist/build/pdf.worker.min.mjs';
