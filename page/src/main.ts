import './bridge'; import './registry';
